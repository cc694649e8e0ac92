#include "mpeg/frame_header_record.h"

#include <cstddef>
#include <string_view>

#include "mpeg/bit_digits.h"
#include "mpeg/frame_tables.h"

namespace brindle {
namespace {

constexpr std::uint8_t kFirstSyncByte = 255;
constexpr std::uint8_t kLeastSecondSyncByte = 224;
constexpr std::int32_t kIllegalEmphasis = 2;
constexpr std::int16_t kCrcBytes = 2;

// The digits of one field, by the 1-based positions of its first and last character.
std::u16string_view cut(const String& digits, std::size_t first, std::size_t last) {
    return std::u16string_view(digits).substr(first - 1, last - first + 1);
}

// The text of the rule that the header breaks; empty when it is valid.
std::string_view decode_fields(FrameHeaderRecord& record, const Trace& trace) {
    if (record.HeaderBytes[0] != kFirstSyncByte) {
        return trace_text::kFirstByte;
    }
    if (record.HeaderBytes[1] < kLeastSecondSyncByte) {
        return trace_text::kSecondByte;
    }
    record.HeaderBits = BytesToBitString(record.HeaderBytes);
    const String& digits = record.HeaderBits;
    const auto two_bits = [&](std::size_t first) {
        return TwoBitToDec(cut(digits, first, first + 1), trace);
    };
    const auto index = [](std::int16_t number) { return static_cast<std::size_t>(number); };
    const auto one_bit = [&](std::size_t position) {
        return static_cast<std::int16_t>(digits[position - 1] - u'0');
    };

    record.MpegVersion = kVersions[index(two_bits(12))];
    if (record.MpegVersion == 0) {
        return trace_text::kVersion;
    }
    record.MpegLayer = kLayers[index(two_bits(14))];
    if (record.MpegLayer == 0) {
        return trace_text::kLayer;
    }
    record.Crc = one_bit(16) == 1 ? std::int16_t{0} : kCrcBytes;
    record.BitRate = bit_rates(record.MpegVersion,
                               record.MpegLayer)[index(FourBitToDec(cut(digits, 17, 20), trace))];
    if (record.BitRate == 0) {
        return trace_text::kBitRate;
    }
    record.SamplingFrequency = frequencies(record.MpegVersion)[index(two_bits(21))];
    if (record.SamplingFrequency == 0) {
        return trace_text::kSampleRate;
    }
    record.Padding = one_bit(23) == 1 ? padding_of(record.MpegLayer) : std::int16_t{0};
    record.ChannelMode = two_bits(25);
    record.CopyRight = one_bit(29);
    record.Original = one_bit(30);
    record.Emphasis = two_bits(31);
    if (record.Emphasis == kIllegalEmphasis) {
        return trace_text::kEmphasis;
    }
    record.FrameLength = static_cast<std::int16_t>(
        FrameLengthinBytes(record.BitRate, record.SamplingFrequency, record.Padding,
                           record.MpegLayer, record.MpegVersion));
    return {};
}

bool read_frame_data(FrameHeaderRecord& record, FileWindow& file) {
    const std::size_t wanted = static_cast<std::size_t>(record.FrameLength) - kHeaderBytes;
    const auto data =
        file.view(record.HeaderStartPos + static_cast<std::int64_t>(kHeaderBytes), wanted);
    record.FrameData.assign(data.begin(), data.end());
    return data.size() == wanted;
}

}  // namespace

bool DecodeFrameHeader(FrameHeaderRecord& record, FileWindow* file, const Trace& trace) {
    if (const std::string_view broken_rule = decode_fields(record, trace); !broken_rule.empty()) {
        write_trace(trace, broken_rule);
        return false;
    }
    if (file != nullptr && !read_frame_data(record, *file)) {
        write_trace(trace, trace_text::kDecodeFailed);
        return false;
    }
    return true;
}

}  // namespace brindle
