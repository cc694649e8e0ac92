#include "commands/encoder_header.h"

#include <algorithm>
#include <array>

namespace brindle::host {

namespace {

std::int64_t big_endian(std::string_view bytes) {
    std::int64_t number = 0;
    for (const char byte : bytes) {
        number = number << 8 | static_cast<std::uint8_t>(byte);
    }
    return number;
}

constexpr std::size_t kMark = 4;
constexpr std::size_t kNumber = 4;

// After the side information, whose length is one of these.
std::optional<EncoderHeader> xing_header(std::string_view frame) {
    constexpr std::array<std::size_t, 4> kOffsets{4 + 9, 4 + 17, 4 + 32, 4 + 19};
    constexpr std::int64_t kHasFrames = 1;
    constexpr std::int64_t kHasBytes = 2;
    for (const std::size_t offset : kOffsets) {
        const std::string_view rest = frame.substr(std::min(offset, frame.size()));
        if (!rest.starts_with("Xing") && !rest.starts_with("Info")) {
            continue;
        }
        EncoderHeader header;
        if (rest.size() < kMark + 3 * kNumber) {
            return header;
        }
        const std::int64_t flags = big_endian(rest.substr(kMark, kNumber));
        std::size_t place = kMark + kNumber;
        if ((flags & kHasFrames) != 0) {
            header.frames = big_endian(rest.substr(place, kNumber));
            place += kNumber;
        }
        if ((flags & kHasBytes) != 0) {
            header.bytes = big_endian(rest.substr(place, kNumber));
        }
        return header;
    }
    return std::nullopt;
}

std::optional<EncoderHeader> vbri_header(std::string_view frame) {
    constexpr std::size_t kOffset = 4 + 32;
    constexpr std::size_t kBytes = 10;
    constexpr std::size_t kFrames = 14;
    const std::string_view rest = frame.substr(std::min(kOffset, frame.size()));
    if (!rest.starts_with("VBRI")) {
        return std::nullopt;
    }
    EncoderHeader header;
    if (rest.size() >= kFrames + kNumber) {
        header.bytes = big_endian(rest.substr(kBytes, kNumber));
        header.frames = big_endian(rest.substr(kFrames, kNumber));
    }
    return header;
}

}  // namespace

std::optional<EncoderHeader> encoder_header_in(std::string_view frame) {
    const std::optional<EncoderHeader> xing = xing_header(frame);
    return xing ? xing : vbri_header(frame);
}

}  // namespace brindle::host
