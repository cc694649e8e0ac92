#pragma once

#include <cstdint>

namespace brindle {

// Neighbouring bytes of a file: from `begin` up to, and without, `end`.
struct ByteRange {
    std::int64_t begin = 0;
    std::int64_t end = 0;

    [[nodiscard]] std::int64_t length() const noexcept { return end - begin; }

    friend bool operator==(const ByteRange&, const ByteRange&) = default;
};

}  // namespace brindle
