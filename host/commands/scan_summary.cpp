#include "commands/scan_summary.h"

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

void ScanSummary::add(const cMPEGHeader& header) {
    const bool variable = header.VBR();
    const std::int32_t milliseconds = header.Duration();
    const eTagType tags = header.TagType();
    const std::lock_guard<std::mutex> lock(mutex_);
    ++(!has_stream(header) ? streams_.none : variable ? streams_.variable : streams_.constant);
    milliseconds_ += milliseconds;
    ++tags_.at(tags < 0 ? 0 : static_cast<std::size_t>(tags));
}

std::string ScanSummary::text(const BatchOutcome& outcome) const {
    const auto tags = [this](eTagType type) {
        return std::to_string(tags_.at(static_cast<std::size_t>(type))) + " " + tag_type_text(type);
    };
    const auto number = [](std::int64_t count) { return std::to_string(count); };
    std::string text =
        outcome.files_text() + ", " + hours_text(milliseconds_) + " hours of audio\n";
    text += "  Bit rate  " + number(streams_.constant) + " constant, " + number(streams_.variable) +
            " variable, " + number(streams_.none) + " without a stream\n";
    text += "  Tags      " + tags(v1TagOnly) + ", " + tags(v2TagOnly) + ", " +
            tags(v1andv2TagsBothPresent) + ", " + tags(NoTags) + "\n";
    return text + "  Failed    " + number(outcome.failures) + "\n";
}

}  // namespace brindle::host
