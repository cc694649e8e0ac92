#include "mpeg/frame_header.h"

#include <algorithm>
#include <bit>

#include "mpeg/bit_digits.h"
#include "mpeg/frame_tables.h"

namespace brindle {
namespace {

constexpr std::uint32_t field(std::uint32_t bits, std::uint32_t mask) {
    return (bits & mask) >> std::countr_zero(mask);
}

constexpr bool decode(FrameHeaderRecord& record, std::uint32_t bits) {
    constexpr std::int16_t kCrcBytes = 2;
    if ((bits & kSyncMask) != kSyncMask) {
        return false;
    }
    record.MpegVersion = kVersions[field(bits, kVersionMask)];
    if (record.MpegVersion == 0) {
        return false;
    }
    record.MpegLayer = kLayers[field(bits, kLayerMask)];
    if (record.MpegLayer == 0) {
        return false;
    }
    record.Crc = (bits & kProtectionMask) != 0 ? std::int16_t{0} : kCrcBytes;
    record.BitRate = bit_rates(record.MpegVersion, record.MpegLayer)[field(bits, kBitRateMask)];
    if (record.BitRate == 0) {
        return false;
    }
    record.SamplingFrequency = frequencies(record.MpegVersion)[field(bits, kFrequencyMask)];
    if (record.SamplingFrequency == 0) {
        return false;
    }
    record.Padding = (bits & kPaddingMask) != 0 ? padding_of(record.MpegLayer) : std::int16_t{0};
    record.ChannelMode = static_cast<std::int32_t>(field(bits, kModeMask));
    record.CopyRight = static_cast<std::int32_t>(field(bits, kCopyrightMask));
    record.Original = static_cast<std::int32_t>(field(bits, kOriginalMask));
    record.Emphasis = static_cast<std::int32_t>(field(bits, kEmphasisMask));
    if ((bits & kEmphasisMask) == kReservedEmphasis) {
        return false;
    }
    record.FrameLength = static_cast<std::int16_t>(
        FrameLengthinBytes(record.BitRate, record.SamplingFrequency, record.Padding,
                           record.MpegLayer, record.MpegVersion));
    return true;
}

constexpr FrameShape shape_at(std::size_t index) {
    const std::uint32_t bits = kSyncMask | static_cast<std::uint32_t>(index) << kShapeShift;
    FrameHeaderRecord plain;
    FrameHeaderRecord padded;
    if (!decode(plain, bits) || !decode(padded, bits | kPaddingMask)) {
        return {};
    }
    return {static_cast<std::uint16_t>(plain.FrameLength),
            static_cast<std::uint8_t>(plain.BitRate / 8),
            static_cast<std::uint8_t>(padded.FrameLength - plain.FrameLength)};
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

String FrameHeaderRecord::HeaderBits() const {
    return BytesToBitString(HeaderBytes);
}

bool DecodeFrameHeader(FrameHeaderRecord& record) {
    return decode(record, header_bits(record.HeaderBytes.data()));
}

FrameHeaderRecord record_of(std::uint32_t bits, std::int32_t position) {
    FrameHeaderRecord record;
    for (std::uint8_t& byte : record.HeaderBytes) {
        byte = static_cast<std::uint8_t>(bits >> 24U);
        bits <<= 8U;
    }
    record.HeaderStartPos = position;
    DecodeFrameHeader(record);
    return record;
}

namespace {

constexpr bool lengths_are_within_bounds() {
    return std::all_of(kFrameShapes.begin(), kFrameShapes.end(), [](const FrameShape& shape) {
        return shape.length == 0 ||
               (shape.length >= kShortestFrame && shape.length + shape.padding <= kLongestFrame);
    });
}
static_assert(lengths_are_within_bounds());

// The sum of the bit rates of all frames of a file is therefore at most the file's length, and
// fits in 32 bits.
constexpr bool no_frame_has_fewer_bytes_than_kilobits_a_second() {
    return std::all_of(kFrameShapes.begin(), kFrameShapes.end(), [](const FrameShape& shape) {
        return shape.length >= shape.bit_rate_by_8 * 8;
    });
}
static_assert(no_frame_has_fewer_bytes_than_kilobits_a_second());

}  // namespace

}  // namespace brindle
