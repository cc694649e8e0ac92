#include "mpeg/frame_header.h"

#include <algorithm>

#include "mpeg/frame_tables.h"

namespace brindle {
namespace {

constexpr FrameShape shape_at(std::size_t index) {
    const std::int16_t version = kVersions[index >> 9];
    const std::int16_t layer = kLayers[(index >> 7) & 3];
    if (version == 0 || layer == 0) {
        return {};
    }
    const std::int32_t bit_rate = bit_rates(version, layer)[(index >> 2) & 15];
    const std::int32_t frequency = frequencies(version)[index & 3];
    if (bit_rate == 0 || frequency == 0) {
        return {};
    }
    const std::int32_t plain = FrameLengthinBytes(bit_rate, frequency, 0, layer, version);
    const std::int32_t padded =
        FrameLengthinBytes(bit_rate, frequency, padding_of(layer), layer, version);
    return {static_cast<std::uint16_t>(plain), static_cast<std::uint8_t>(bit_rate / 8),
            static_cast<std::uint8_t>(padded - plain)};
}

constexpr std::array<FrameShape, kShapeCount> build_shapes() {
    std::array<FrameShape, kShapeCount> shapes{};
    for (std::size_t index = 0; index < shapes.size(); ++index) {
        shapes[index] = shape_at(index);
    }
    return shapes;
}

}  // namespace

constexpr std::array<FrameShape, kShapeCount> kFrameShapes = build_shapes();

namespace {

constexpr bool lengths_are_within_bounds() {
    return std::all_of(kFrameShapes.begin(), kFrameShapes.end(), [](const FrameShape& shape) {
        return shape.length == 0 ||
               (shape.length >= kShortestFrame && shape.length + shape.padding <= kLongestFrame);
    });
}
static_assert(lengths_are_within_bounds());

// The sum of the bit rates of all frames of a file is therefore at most the file's length: in
// files that are looked at it fits in 32 bits.
constexpr bool no_frame_has_fewer_bytes_than_kilobits_a_second() {
    return std::all_of(kFrameShapes.begin(), kFrameShapes.end(), [](const FrameShape& shape) {
        return shape.length >= shape.bit_rate_by_8 * 8;
    });
}
static_assert(no_frame_has_fewer_bytes_than_kilobits_a_second());

}  // namespace

}  // namespace brindle
