#include "mpeg/header_search.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include <gtest/gtest.h>

#include "mpeg/frame_header.h"

namespace brindle {
namespace {

std::optional<std::size_t> first_header(const std::vector<std::uint8_t>& bytes) {
    return find_header(
        bytes, [&](std::size_t at) { return is_header_of_any_rate(header_bits(&bytes[at])); });
}

TEST(HeaderSearch, FindsAHeaderAtEveryPosition) {
    constexpr std::size_t kLength = 200;
    for (std::size_t at = 0; at + kHeaderBytes <= kLength; ++at) {
        std::vector<std::uint8_t> bytes(kLength);
        bytes[at] = 0xFF;
        bytes[at + 1] = 0xFB;
        bytes[at + 2] = 0x90;
        EXPECT_EQ(first_header(bytes), at);
    }
}

TEST(HeaderSearch, CutHeaderIsNone) {
    EXPECT_EQ(first_header({0xFF, 0xFB, 0x90}), std::nullopt);
    EXPECT_EQ(first_header({0, 0, 0xFF, 0xFB, 0x90}), std::nullopt);
    EXPECT_EQ(first_header({}), std::nullopt);
}

}  // namespace
}  // namespace brindle
