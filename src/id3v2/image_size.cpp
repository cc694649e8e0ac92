#include "id3v2/image_size.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <span>
#include <string_view>

#include "util/big_endian.h"

namespace brindle {

namespace {

using Bytes = std::span<const std::uint8_t>;

std::uint32_t big16(Bytes bytes, std::size_t offset) {
    return big_endian<2>(&bytes[offset]);
}

std::uint32_t big32(Bytes bytes, std::size_t offset) {
    return big_endian<4>(&bytes[offset]);
}

template <std::size_t Width>
std::uint32_t little(Bytes bytes, std::size_t offset) {
    std::uint32_t number = 0;
    for (std::size_t i = Width; i-- > 0;) {
        number = number << 8U | bytes[offset + i];
    }
    return number;
}

bool has(Bytes bytes, std::size_t offset, std::string_view text) {
    return bytes.size() >= offset + text.size() &&
           std::equal(
               text.begin(), text.end(), bytes.begin() + static_cast<std::ptrdiff_t>(offset),
               [](char c, std::uint8_t byte) { return static_cast<std::uint8_t>(c) == byte; });
}

std::optional<ImageSize> size_of(std::uint32_t width, std::uint32_t height) {
    constexpr auto kMax = static_cast<std::uint32_t>(std::numeric_limits<std::int32_t>::max());
    if (width == 0 || height == 0 || width > kMax || height > kMax) {
        return std::nullopt;
    }
    return ImageSize{static_cast<std::int32_t>(width), static_cast<std::int32_t>(height)};
}

//   89 "PNG" 0D 0A 1A 0A | length 13 | "IHDR" | width | height
std::optional<ImageSize> png_size(Bytes head) {
    constexpr std::size_t kEnd = 24;
    return head.size() >= kEnd && has(head, 12, "IHDR") ? size_of(big32(head, 16), big32(head, 20))
                                                        : std::nullopt;
}

//   "GIF89a" | width | height, of 16 bits
std::optional<ImageSize> gif_size(Bytes head) {
    constexpr std::size_t kEnd = 10;
    return head.size() >= kEnd ? size_of(little<2>(head, 6), little<2>(head, 8)) : std::nullopt;
}

//   "BM" | 12 bytes | header length | width | height, of 16 bits in the oldest header. A negative
//   height is that of an image whose first row is the top one.
std::optional<ImageSize> bmp_size(Bytes head) {
    constexpr std::size_t kEnd = 26;
    constexpr std::uint32_t kOldestHeader = 12;
    if (head.size() < kEnd) {
        return std::nullopt;
    }
    if (little<4>(head, 14) == kOldestHeader) {
        return size_of(little<2>(head, 18), little<2>(head, 20));
    }
    const std::uint32_t height = little<4>(head, 22);
    const bool is_negative = (height >> 31U) != 0;
    return size_of(little<4>(head, 18), is_negative ? ~height + 1 : height);
}

//   "RIFF" | length | "WEBP" | chunk: "VP8 ", "VP8L" or "VP8X" | length | ...
std::optional<ImageSize> webp_size(Bytes head) {
    constexpr std::size_t kEnd = 30;
    constexpr std::uint32_t k14Bits = 0x3FFF;
    if (head.size() < kEnd) {
        return std::nullopt;
    }
    // Three bytes of the frame, the start code, then 14 bits each and two of scale.
    if (has(head, 12, "VP8 ") && has(head, 23, "\x9D\x01\x2A")) {
        return size_of(little<2>(head, 26) & k14Bits, little<2>(head, 28) & k14Bits);
    }
    // A signature, then 14 bits each of the size less 1.
    if (has(head, 12, "VP8L") && has(head, 20, "/")) {
        const std::uint32_t bits = little<4>(head, 21);
        return size_of((bits & k14Bits) + 1, (bits >> 14U & k14Bits) + 1);
    }
    // Four bytes of flags, then 24 bits each of the canvas' size less 1.
    if (has(head, 12, "VP8X")) {
        return size_of(little<3>(head, 24) + 1, little<3>(head, 27) + 1);
    }
    return std::nullopt;
}

// Bytes of the image, in blocks.
class ImageBytes {
public:
    ImageBytes(BinaryFile& file, const ByteRange& image, Bytes held)
        : file_(file), image_(image), held_(held) {}

    // `count` bytes, fewer where the image ends. Valid until the next call.
    Bytes at(std::int64_t offset, std::size_t count) {
        const std::int64_t wanted_end =
            std::min(image_.length(), offset + static_cast<std::int64_t>(count));
        if (wanted_end <= static_cast<std::int64_t>(held_.size())) {
            const auto begin = std::min(held_.size(), static_cast<std::size_t>(offset));
            return held_.subspan(begin, std::min(count, held_.size() - begin));
        }
        if (offset < begin_ || offset + static_cast<std::int64_t>(count) > end()) {
            const std::int64_t left = std::max(std::int64_t{0}, image_.length() - offset);
            const auto wanted = std::min(left, static_cast<std::int64_t>(block_.size()));
            begin_ = offset;
            size_ = wanted == 0
                        ? 0
                        : file_.read_at(image_.begin + offset,
                                        std::span(block_).first(static_cast<std::size_t>(wanted)));
        }
        const Bytes ahead =
            Bytes(block_).first(size_).subspan(static_cast<std::size_t>(offset - begin_));
        return ahead.first(std::min(count, ahead.size()));
    }

private:
    [[nodiscard]] std::int64_t end() const { return begin_ + static_cast<std::int64_t>(size_); }

    BinaryFile& file_;
    ByteRange image_;
    Bytes held_;
    std::array<std::uint8_t, 1024> block_{};
    std::int64_t begin_ = 0;
    std::size_t size_ = 0;
};

// Segments of FF, marker, length of 16 bits (itself included) and contents. That of the start of
// a frame (SOF) holds the precision, height and width.
std::optional<ImageSize> jpeg_size(ImageBytes& image) {
    // Profiles and metadata of 64 kB each may precede it, some dozens at most.
    constexpr int kMaxSegments = 64;
    constexpr std::size_t kSegmentHead = 9;
    constexpr std::size_t kSegmentStart = 4;
    std::int64_t position = 2;
    for (int i = 0; i < kMaxSegments; ++i) {
        const Bytes head = image.at(position, kSegmentHead);
        if (head.size() < kSegmentStart || head[0] != 0xFF) {
            return std::nullopt;
        }
        const std::uint8_t marker = head[1];
        if (marker == 0xFF) {
            ++position;  // fill
            continue;
        }
        const bool is_lone = marker == 0x01 || (marker >= 0xD0 && marker <= 0xD8);
        if (is_lone) {
            position += 2;
            continue;
        }
        constexpr std::uint8_t kEndOfImage = 0xD9;
        constexpr std::uint8_t kStartOfScan = 0xDA;
        if (marker == kEndOfImage || marker == kStartOfScan) {
            return std::nullopt;
        }
        // C4, C8 and CC are tables.
        const bool is_frame =
            marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
        if (is_frame) {
            return head.size() < kSegmentHead ? std::nullopt
                                              : size_of(big16(head, 7), big16(head, 5));
        }
        position += 2 + static_cast<std::int64_t>(big16(head, 2));
    }
    return std::nullopt;
}

}  // namespace

std::optional<ImageSize> read_image_size(BinaryFile& file, const ByteRange& image, Bytes held) {
    constexpr std::size_t kLongestHead = 30;
    ImageBytes bytes(file, image, held);
    const Bytes head = bytes.at(0, kLongestHead);
    if (has(head, 0, "\x89PNG\r\n\x1A\n")) {
        return png_size(head);
    }
    if (has(head, 0, "\xFF\xD8\xFF")) {
        return jpeg_size(bytes);
    }
    if (has(head, 0, "GIF87a") || has(head, 0, "GIF89a")) {
        return gif_size(head);
    }
    if (has(head, 0, "BM")) {
        return bmp_size(head);
    }
    if (has(head, 0, "RIFF") && has(head, 8, "WEBP")) {
        return webp_size(head);
    }
    return std::nullopt;
}

}  // namespace brindle
