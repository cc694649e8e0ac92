#include <array>
#include <stdexcept>

#include <openssl/evp.h>

#include "system/hexadecimal.h"
#include "system/sha256.h"

namespace brindle::host {

namespace {

void require(int is_done) {
    if (is_done != 1) {
        throw std::runtime_error("libcrypto computes no SHA-256");
    }
}

}  // namespace

struct Sha256::State {
    struct Free {
        void operator()(EVP_MD_CTX* owned) const { EVP_MD_CTX_free(owned); }
    };
    std::unique_ptr<EVP_MD_CTX, Free> context{EVP_MD_CTX_new()};
};

std::optional<std::string> reason_against_hashing() {
    return std::nullopt;
}

Sha256::Sha256() : state_(std::make_unique<State>()) {
    require(EVP_DigestInit_ex(state_->context.get(), EVP_sha256(), nullptr));
}

Sha256::~Sha256() = default;

void Sha256::add(std::span<const std::uint8_t> bytes) {
    require(EVP_DigestUpdate(state_->context.get(), bytes.data(), bytes.size()));
}

std::string Sha256::digits() {
    std::array<std::uint8_t, EVP_MAX_MD_SIZE> digest{};
    unsigned size = 0;
    require(EVP_DigestFinal_ex(state_->context.get(), digest.data(), &size));
    return hexadecimal(std::span(digest).first(size));
}

}  // namespace brindle::host
