// The bytes that a fuzzer generates, read from the front; and the reaction to a broken promise.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "support/bytes.h"

namespace brindle::fuzz {

class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : at_(data), left_(size) {}

    [[nodiscard]] bool empty() const { return left_ == 0; }
    // Reading beyond the end gives zeros.
    std::uint8_t byte() {
        if (left_ == 0) {
            return 0;
        }
        --left_;
        return *at_++;
    }
    std::uint32_t number(int bytes) {
        std::uint32_t value = 0;
        for (; bytes > 0; --bytes) {
            value = value << 8 | byte();
        }
        return value;
    }
    test::Bytes bytes(std::size_t count) {
        count = std::min(count, left_);
        test::Bytes taken(std::vector<std::uint8_t>(at_, at_ + count));
        at_ += count;
        left_ -= count;
        return taken;
    }
    test::Bytes rest() { return bytes(left_); }

private:
    const std::uint8_t* at_;
    std::size_t left_;
};

// The fuzzer keeps the input that led here.
inline void require(bool holds, const std::string& promise) {
    if (!holds) {
        (void)std::fprintf(stderr, "broken: %s\n", promise.c_str());
        std::abort();
    }
}

}  // namespace brindle::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
