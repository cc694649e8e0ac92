#include "commands/scan_summary.h"

#include <utility>

#include "output/stream_text.h"

namespace brindle::host {

namespace {

// Hours, minutes and seconds, as in 1:02:03.
std::string hours_text(std::int64_t milliseconds) {
    constexpr std::int64_t kSecond = 1000;
    constexpr std::int64_t kSixty = 60;
    const auto two_digits = [](std::int64_t number) {
        return (number < 10 ? ":0" : ":") + std::to_string(number);
    };
    const std::int64_t seconds = (milliseconds + kSecond / 2) / kSecond;
    const std::int64_t minutes = seconds / kSixty;
    return std::to_string(minutes / kSixty) + two_digits(minutes % kSixty) +
           two_digits(seconds % kSixty);
}

}  // namespace

Counted ScanSummary::counted(const cMPEGHeader& header) {
    const Stream stream = !has_stream(header) ? Stream::None
                          : header.VBR()      ? Stream::Variable
                                              : Stream::Constant;
    const eTagType tags = header.TagType();
    return {static_cast<std::int64_t>(stream), header.Duration(), tags < 0 ? 0 : tags};
}

bool ScanSummary::add(const Counted& counted) {
    const auto [stream, milliseconds, tags] = counted;
    const auto is_index = [](std::int64_t number, const auto& numbers) {
        return number >= 0 && number < static_cast<std::int64_t>(numbers.size());
    };
    if (!is_index(stream, streams_) || !is_index(tags, tags_) ||
        !std::in_range<std::int32_t>(milliseconds)) {
        return false;
    }
    const std::lock_guard<std::mutex> lock(mutex_);
    ++streams_.at(static_cast<std::size_t>(stream));
    milliseconds_ += milliseconds;
    ++tags_.at(static_cast<std::size_t>(tags));
    return true;
}

std::string ScanSummary::text(const BatchOutcome& outcome) const {
    const auto tags = [this](eTagType type) {
        return std::to_string(tags_.at(static_cast<std::size_t>(type))) + " " + tag_type_text(type);
    };
    const auto number = [](std::int64_t count) { return std::to_string(count); };
    std::string text =
        outcome.files_text() + ", " + hours_text(milliseconds_) + " hours of audio\n";
    text += "  Bit rate  " + number(streams(Stream::Constant)) + " constant, " +
            number(streams(Stream::Variable)) + " variable, " + number(streams(Stream::None)) +
            " without a stream\n";
    text += "  Tags      " + tags(v1TagOnly) + ", " + tags(v2TagOnly) + ", " +
            tags(v1andv2TagsBothPresent) + ", " + tags(NoTags) + "\n";
    return text + "  Failed    " + number(outcome.failures) + "\n";
}

}  // namespace brindle::host
