#include "id3v2/byte_arena.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include <gtest/gtest.h>

namespace brindle {
namespace {

TEST(ByteArena, PiecesKeepTheirBytesWhileMoreAreHandedOut) {
    constexpr std::size_t kSizes[] = {0, 1, 900, 200, 1'024, 1'025, 5'000, 70'000, 3};
    ByteArena arena;
    std::vector<std::span<std::uint8_t>> pieces;
    for (const std::size_t size : kSizes) {
        pieces.push_back(arena.allocate(size));
        pieces.push_back(arena.allocate_for_read(size, 12'345));
        ASSERT_EQ(pieces.back().size(), size);
        for (std::size_t piece = pieces.size() - 2; piece < pieces.size(); ++piece) {
            std::fill(pieces[piece].begin(), pieces[piece].end(), static_cast<std::uint8_t>(piece));
        }
    }
    for (std::size_t piece = 0; piece < pieces.size(); ++piece) {
        EXPECT_EQ(pieces[piece].size(), kSizes[piece / 2]);
        EXPECT_TRUE(std::all_of(pieces[piece].begin(), pieces[piece].end(), [&](std::uint8_t byte) {
            return byte == piece;
        })) << piece;
    }
}

TEST(ByteArena, APieceForAReadLiesInACacheLineAsItDoesInTheFile) {
    ByteArena arena;
    for (std::int64_t offset = 8'000; offset < 8'200; ++offset) {
        const auto piece = arena.allocate_for_read(60'000, offset);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(piece.data()) % 64,
                  static_cast<std::uintptr_t>(offset) % 64);
    }
}

}  // namespace
}  // namespace brindle
