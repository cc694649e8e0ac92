#include "output/stream_text.h"

#include <algorithm>
#include <cstdlib>

#include <brindle/text.h>

namespace brindle::host {

bool has_stream(const cMPEGHeader& header) {
    return header.Frequency() != 0;
}

std::string format_text(const cMPEGHeader& header) {
    const std::string version = to_utf8(header.MpegVersion());
    return "MPEG " + (version == "25" ? "2.5" : version) + " Layer " + to_utf8(header.Layer());
}

// The member counts in bit/s when the rate is constant and in kbit/s when it is not.
std::int32_t kilobits_per_second(const cMPEGHeader& header) {
    constexpr std::int32_t kBitsPerKilobit = 1000;
    return header.VBR() ? header.BitRate() : header.BitRate() / kBitsPerKilobit;
}

std::string milliseconds_text(std::int64_t ms) {
    return std::to_string(ms) + " ms";
}

std::string time_text(std::int64_t ms) {
    constexpr std::int64_t kSecond = 1'000;
    constexpr std::int64_t kMinute = 60 * kSecond;
    constexpr std::size_t kSecondDigits = 2;
    constexpr std::size_t kMillisecondDigits = 3;
    const auto padded = [](std::int64_t number, std::size_t width) {
        const std::string digits = std::to_string(number);
        return std::string(width - std::min(width, digits.size()), '0') + digits;
    };
    const std::int64_t positive = std::abs(ms);
    return (ms < 0 ? "-" : "") + std::to_string(positive / kMinute) + ":" +
           padded(positive % kMinute / kSecond, kSecondDigits) + "." +
           padded(positive % kSecond, kMillisecondDigits);
}

bool has_id3v1(const cMPEGHeader& header) {
    const eTagType type = header.TagType();
    return type == v1TagOnly || type == v1andv2TagsBothPresent;
}

bool has_id3v2(const cMPEGHeader& header) {
    const eTagType type = header.TagType();
    return type == v2TagOnly || type == v1andv2TagsBothPresent;
}

std::string tag_type_text(eTagType type) {
    switch (type) {
        case v1TagOnly:
            return "ID3v1";
        case v2TagOnly:
            return "ID3v2";
        case v1andv2TagsBothPresent:
            return "ID3v1 and ID3v2";
        case NoTags:
            break;
    }
    return "none";
}

}  // namespace brindle::host
