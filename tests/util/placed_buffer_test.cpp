#include "util/placed_buffer.h"

#include <cstdint>

#include <gtest/gtest.h>

namespace brindle {
namespace {

TEST(PlacedBuffer, BytesLieInACacheLineAsTheyDoInTheFile) {
    const PlacedBuffer buffer(1'000);
    for (std::int64_t offset = 0; offset < 200; ++offset) {
        std::uint8_t* const place = buffer.place_for(offset);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(place) % 64,
                  static_cast<std::uintptr_t>(offset) % 64);
        // Where these lay outside, the sanitizers would tell.
        place[0] = 1;
        place[999] = 1;
    }
}

}  // namespace
}  // namespace brindle
