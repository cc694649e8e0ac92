// How an ID3v2 tag lies in a file. From the public documents "ID3 tag version 2" (2.2), "ID3 tag
// version 2.3.0" and "ID3 tag version 2.4.0".
//
//     tag header, 10 bytes
//     0        3         4          5       6
//     +--------+---------+----------+-------+---------------------+
//     | "ID3"  | version | revision | flags | size, 4 x 7 bits    |
//     +--------+---------+----------+-------+---------------------+
//
//     frame header, versions 3 and 4: 10 bytes      version 2: 6 bytes
//     0        4               8                    0      3
//     +--------+---------------+---------+          +------+--------------+
//     | id     | size, 32 bits | flags   |          | id   | size, 24 bits|
//     +--------+---------------+---------+          +------+--------------+
//
// The tag size leaves its own header out. Frame sizes are plain big-endian numbers in every
// version here, also in 4, whose document wants 7 bits a byte: the files of the field are written
// by tools that never did.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <brindle/values.h>

namespace brindle {

inline constexpr std::uint8_t kTagIdentifier[] = {'I', 'D', '3'};
inline constexpr std::size_t kTagHeaderSize = 10;
inline constexpr std::size_t kVersionOffset = 3;
inline constexpr std::size_t kTagSizeOffset = 6;
inline constexpr std::size_t kTagSizeWidth = 4;
inline constexpr std::uint8_t kOldestVersion = 2;
inline constexpr std::uint8_t kNewestVersion = 4;
inline constexpr std::uint8_t kWrittenVersion = 3;

[[nodiscard]] constexpr bool is_known_version(std::uint8_t version) noexcept {
    return version >= kOldestVersion && version <= kNewestVersion;
}

// The characters of a frame's id as one number, the last one lowest.
enum class FrameId : std::uint32_t {};
[[nodiscard]] constexpr FrameId frame_id(std::string_view id) noexcept {
    std::uint32_t number = 0;
    for (const char character : id) {
        number = (number << 8U) | static_cast<std::uint8_t>(character);
    }
    return FrameId{number};
}
// As it is kept: each byte a character of the code page.
[[nodiscard]] String text_of(FrameId id);
[[nodiscard]] String text_of_id(std::string_view id);
[[nodiscard]] std::string id_of_text(std::u16string_view text);
inline constexpr FrameId kNoFrameId = frame_id("");  // NULs: padding
inline constexpr FrameId kPictureFrameId = frame_id("APIC");
// User-defined text, which holds the custom and scheduling fields.
inline constexpr std::string_view kCustomId = "TXXX";
inline constexpr FrameId kCustomFrameId = frame_id(kCustomId);

// The header of a frame in one of the two forms.
struct FrameLayout {
    std::size_t id_width;
    std::size_t size_width;
    std::size_t header_size;
};
inline constexpr FrameLayout kFrameLayout{4, 4, 10};
inline constexpr FrameLayout kVersion2FrameLayout{3, 3, 6};

// Limits of what the reader takes into memory. A larger frame is stepped over by its header alone.
inline constexpr std::uint64_t kLargestFrameSize = 16'777'216;  // above: the tag is corrupt
inline constexpr std::uint64_t kLargestPictureSize = 81'920;
inline constexpr std::uint64_t kLargestTextSize = 5'000;

// Big-endian numbers of a byte string: each byte counts 2^shift x 256 times the one to its right.
inline constexpr int kPlainShift = 0;      // base 256
inline constexpr int kSyncsafeShift = -1;  // base 128; the top bit of a byte is not masked off
[[nodiscard]] constexpr std::uint64_t decode_number(std::span<const std::uint8_t> bytes,
                                                    int shift) noexcept {
    constexpr int kByteBits = 8;
    std::uint64_t number = 0;
    for (const std::uint8_t byte : bytes) {
        number = (number << static_cast<unsigned>(kByteBits + shift)) + byte;
    }
    return number;
}
// The rightmost digits that fit into `into`, padded with zeros on the left.
void encode_number(std::uint64_t value, int shift, std::span<std::uint8_t> into) noexcept;

// The header of a version 3 frame.
[[nodiscard]] std::vector<std::uint8_t> frame_header(std::string_view id, std::uint64_t body_size,
                                                     const std::array<std::uint8_t, 2>& flags = {});

// What the second byte of a frame's flags says of its body: "ID3 tag version 2.3.0", section 3.3.1,
// and "ID3 tag version 2.4.0 - Main Structure", section 4.1.2.
namespace version3_flags {
inline constexpr std::uint8_t kCompressed = 0x80;  // the length without compression in front
inline constexpr std::uint8_t kEncrypted = 0x40;   // the method in front
inline constexpr std::uint8_t kGrouped = 0x20;     // the group in front
}  // namespace version3_flags
namespace version4_flags {
inline constexpr std::uint8_t kGrouped = 0x40;
inline constexpr std::uint8_t kCompressed = 0x08;
inline constexpr std::uint8_t kEncrypted = 0x04;
inline constexpr std::uint8_t kUnsynchronised = 0x02;
inline constexpr std::uint8_t kHasLength = 0x01;  // of the content, in front of it
}  // namespace version4_flags

// The version 3 id under which a version 2 frame is kept; "" for those without a counterpart here.
[[nodiscard]] std::string_view from_version2_id(std::string_view id) noexcept;
[[nodiscard]] FrameId from_version2_id(FrameId id) noexcept;

}  // namespace brindle
