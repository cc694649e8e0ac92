// The header of a frame, and which headers belong to one stream.
//
//   AAAAAAAA AAABBCCD EEEEFFGH IIJJKLMM
//
//   A sync (all ones)   D protection           G padding      J mode extension   M emphasis
//   B version           E bit rate             H private      K copyright
//   C layer             F sampling frequency   I mode         L original
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include <brindle/values.h>

#include "util/big_endian.h"

namespace brindle {

inline constexpr std::size_t kHeaderBytes = 4;
inline constexpr std::uint8_t kSyncByte = 0xFF;  // the first byte of each header

inline constexpr std::uint32_t kSyncMask = 0xFFE0'0000;
inline constexpr std::uint32_t kVersionMask = 0x0018'0000;
inline constexpr std::uint32_t kLayerMask = 0x0006'0000;
inline constexpr std::uint32_t kProtectionMask = 0x0001'0000;
inline constexpr std::uint32_t kBitRateMask = 0x0000'F000;
inline constexpr std::uint32_t kFrequencyMask = 0x0000'0C00;
inline constexpr std::uint32_t kPaddingMask = 0x0000'0200;
inline constexpr std::uint32_t kModeMask = 0x0000'00C0;
inline constexpr std::uint32_t kCopyrightMask = 0x0000'0008;
inline constexpr std::uint32_t kOriginalMask = 0x0000'0004;
inline constexpr std::uint32_t kEmphasisMask = 0x0000'0003;
inline constexpr std::uint32_t kReservedEmphasis = 0x0000'0002;

inline constexpr std::uint32_t kLayer1 = 0x0006'0000;
inline constexpr std::uint32_t kReservedLayer = 0x0000'0000;
inline constexpr std::uint32_t kReservedVersion = 0x0008'0000;
inline constexpr std::uint32_t kReservedFrequency = 0x0000'0C00;
inline constexpr std::uint32_t kReservedBitRate = 0x0000'F000;

// What frames of one stream have in common. Bit rate, padding and protection may change.
inline constexpr std::uint32_t kStreamMask = kSyncMask | kVersionMask | kLayerMask |
                                             kFrequencyMask | kModeMask | kCopyrightMask |
                                             kOriginalMask | kEmphasisMask;

// MPEG 2.5 Layer II at 160 kbit/s, 8000 Hz, padded; MPEG 2 Layer III at 8 kbit/s, 24000 Hz.
inline constexpr std::int32_t kLongestFrame = 2'881;
inline constexpr std::int32_t kShortestFrame = 24;

[[nodiscard]] constexpr std::uint32_t header_bits(const std::uint8_t* bytes) noexcept {
    return big_endian<kHeaderBytes>(bytes);
}

// Every field of a header by its name. A record of no header is what the members say here.
struct FrameHeaderRecord {
    std::array<std::uint8_t, kHeaderBytes> HeaderBytes{};
    std::int32_t HeaderStartPos = 0;  // 0-based offset in the file
    std::int16_t MpegVersion = 0;     // 1, 2, or 25 for MPEG 2.5
    std::int16_t MpegLayer = 0;
    std::int16_t Crc = 0;      // bytes of it after the header: 0 or 2
    std::int32_t BitRate = 0;  // kbit/s
    std::int32_t SamplingFrequency = 0;
    std::int16_t Padding = 0;  // 0, 1, or 2 for Layer I
    std::int32_t ChannelMode = -1;
    std::int32_t CopyRight = -1;
    std::int32_t Original = -1;
    std::int32_t Emphasis = 2;
    std::int16_t FrameLength = 0;
    bool VBR = false;

    // The 32 bits as digits.
    [[nodiscard]] String HeaderBits() const;
};

// Decodes `HeaderBytes` into the other fields. False at the first rule that is broken; the fields
// before it are then filled.
bool DecodeFrameHeader(FrameHeaderRecord& record);

// The record of a valid header.
[[nodiscard]] FrameHeaderRecord record_of(std::uint32_t bits, std::int32_t position);

// What the walks need of a header.
struct FrameHeader {
    std::uint32_t bits;
    std::uint16_t length;    // bytes, header and padding included
    std::uint16_t bit_rate;  // kbit/s
};

// What version, layer, bit rate and frequency make of a frame. Every bit rate of the format is a
// multiple of 8, which keeps an entry at four bytes.
struct FrameShape {
    std::uint16_t length = 0;  // without padding; 0 where one of the fields is reserved
    std::uint8_t bit_rate_by_8 = 0;
    std::uint8_t padding = 0;  // bytes, when the padding bit is set

    [[nodiscard]] constexpr std::uint32_t length_of(std::uint32_t bits) const noexcept {
        return length + ((bits & kPaddingMask) != 0 ? padding : 0U);
    }
};

inline constexpr std::uint32_t kShapeShift = 10;
inline constexpr std::size_t kShapeCount = 2'048;
// Indexed by the bits from version down to frequency.
extern const std::array<FrameShape, kShapeCount> kFrameShapes;

[[nodiscard]] inline const FrameShape& frame_shape(std::uint32_t bits) noexcept {
    return kFrameShapes[(bits >> kShapeShift) & (kShapeCount - 1)];
}

[[nodiscard]] inline std::optional<FrameHeader> parse_frame_header(std::uint32_t bits) noexcept {
    if ((bits & kSyncMask) != kSyncMask || (bits & kEmphasisMask) == kReservedEmphasis) {
        return std::nullopt;
    }
    const FrameShape& shape = frame_shape(bits);
    if (shape.length == 0) {
        return std::nullopt;
    }
    return FrameHeader{bits, static_cast<std::uint16_t>(shape.length_of(bits)),
                       static_cast<std::uint16_t>(shape.bit_rate_by_8 * 8)};
}

// What decides how long a frame plays: version, layer and sampling frequency. Frames that follow
// each other by chance seldom share it, and a player goes on whatever else changes.
enum class FrameKind : std::uint32_t {};
inline constexpr std::uint32_t kKindMask = kVersionMask | kLayerMask | kFrequencyMask;
[[nodiscard]] constexpr FrameKind kind_of(std::uint32_t bits) noexcept {
    return FrameKind{bits & kKindMask};
}

// The kinds of a stream that the analyser has accepted: mostly one and the same.
struct StreamKinds {
    FrameKind first_frame{};
    FrameKind confirmed{};

    [[nodiscard]] constexpr bool contain(FrameKind kind) const noexcept {
        return kind == first_frame || kind == confirmed;
    }
};

// Whether the bits are a header whose fields are all allowed. Unlike parse_frame_header() it takes
// free format, bit rate index 0, whose frames tell nothing of their length.
[[nodiscard]] constexpr bool is_header_of_any_rate(std::uint32_t bits) noexcept {
    return (bits & kSyncMask) == kSyncMask && (bits & kVersionMask) != kReservedVersion &&
           (bits & kLayerMask) != kReservedLayer && (bits & kBitRateMask) != kReservedBitRate &&
           (bits & kFrequencyMask) != kReservedFrequency &&
           (bits & kEmphasisMask) != kReservedEmphasis;
}

// Of two valid headers: whether they can belong to one stream. An equivalence, so a frame that
// agrees with its predecessor agrees with the first of its chain, and chains that meet go on as
// one.
[[nodiscard]] constexpr bool headers_agree(std::uint32_t a, std::uint32_t b) noexcept {
    return ((a ^ b) & kStreamMask) == 0;
}

}  // namespace brindle
