#include <array>
#include <stdexcept>

// bcrypt.h needs windows.h.
// clang-format off
#include <windows.h>
#include <bcrypt.h>
// clang-format on

#include "system/hexadecimal.h"
#include "system/sha256.h"

namespace brindle::host {

namespace {

constexpr std::size_t kDigestSize = 32;

void require(NTSTATUS status) {
    if (status < 0) {
        throw std::runtime_error("the system computes no SHA-256");
    }
}

// One for the whole program, which may be used by several threads.
class Algorithm {
public:
    Algorithm() {
        require(BCryptOpenAlgorithmProvider(&handle_, BCRYPT_SHA256_ALGORITHM, nullptr, 0));
    }
    Algorithm(const Algorithm&) = delete;
    Algorithm& operator=(const Algorithm&) = delete;
    ~Algorithm() { BCryptCloseAlgorithmProvider(handle_, 0); }

    [[nodiscard]] BCRYPT_ALG_HANDLE handle() const { return handle_; }

private:
    BCRYPT_ALG_HANDLE handle_ = nullptr;
};

}  // namespace

struct Sha256::State {
    BCRYPT_HASH_HANDLE hash = nullptr;
};

std::optional<std::string> reason_against_hashing() {
    return std::nullopt;
}

Sha256::Sha256() : state_(std::make_unique<State>()) {
    static const Algorithm algorithm;
    require(BCryptCreateHash(algorithm.handle(), &state_->hash, nullptr, 0, nullptr, 0, 0));
}

Sha256::~Sha256() {
    BCryptDestroyHash(state_->hash);
}

void Sha256::add(std::span<const std::uint8_t> bytes) {
    // The function does not change the bytes, but takes a pointer to non-const.
    require(BCryptHashData(state_->hash, const_cast<PUCHAR>(bytes.data()),
                           static_cast<ULONG>(bytes.size()), 0));
}

std::string Sha256::digits() {
    std::array<std::uint8_t, kDigestSize> digest{};
    require(BCryptFinishHash(state_->hash, digest.data(), static_cast<ULONG>(digest.size()), 0));
    return hexadecimal(digest);
}

}  // namespace brindle::host
