// SHA-256, by the library that the system or the build has for it.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace brindle::host {

// Why there is none in this build, or nothing.
[[nodiscard]] std::optional<std::string> reason_against_hashing();

class Sha256 {
public:
    Sha256();
    Sha256(const Sha256&) = delete;
    Sha256& operator=(const Sha256&) = delete;
    ~Sha256();

    void add(std::span<const std::uint8_t> bytes);
    // Of all bytes that were added, in 64 hexadecimal digits. Once only.
    [[nodiscard]] std::string digits();

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace brindle::host
