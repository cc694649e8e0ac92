#include "commands/check_points.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include <brindle/text.h>

#include "output/printable_text.h"
#include "output/stream_text.h"

namespace brindle::host {

namespace {

struct Point {
    const char* name;
    std::int32_t at;
    Reason beyond_end;
};

// A field of another program, in seconds.
struct OtherPoint {
    std::u16string_view field;
    const char* name;  // of Brindle's point
    std::int32_t (cMPEGHeader::*at)() const;
};

constexpr std::array<OtherPoint, 4> kOtherPoints{{
    {u"liq_cue_in", "cue-in", &cMPEGHeader::CueInmSStart},
    {u"cue_in", "cue-in", &cMPEGHeader::CueInmSStart},
    {u"liq_cross_start_next", "sectone", &cMPEGHeader::Sectone},
    {u"cross_start_next", "sectone", &cMPEGHeader::Sectone},
}};

// Not negative: that counts from the end in some programs and is out of range in others.
std::optional<std::int64_t> milliseconds_in(const String& seconds) {
    constexpr double kMillisecondsPerSecond = 1'000;
    constexpr double kMax = 1'000'000;
    const std::string text = to_utf8(seconds);
    double number = 0;
    const char* const end = text.data() + text.size();
    const auto [last, error] = std::from_chars(text.data(), end, number, std::chars_format::fixed);
    if (error != std::errc() || last != end || !(number >= 0 && number <= kMax)) {
        return std::nullopt;
    }
    return std::llround(number * kMillisecondsPerSecond);
}

}  // namespace

void check_points(const cMPEGHeader& header, std::int64_t exact, std::vector<Finding>& findings) {
    const Point points[] = {
        {"cue-in", header.CueInmSStart(), Reason::CueInBeyondEnd},
        {"intro", header.Intro(), Reason::IntroBeyondEnd},
        {"outro", header.OutromsStart(), Reason::OutroBeyondEnd},
    };
    std::string order;
    std::pair<std::string, std::int32_t> before{"the beginning", 0};
    for (const Point& point : points) {
        if (point.at == 0) {
            continue;
        }
        const std::string text = std::string(point.name) + " at " + milliseconds_text(point.at);
        if (point.at > exact) {
            findings.push_back(
                {point.beyond_end, text + ", the audio ends at " + milliseconds_text(exact)});
        }
        if (point.at < before.second) {
            order += (order.empty() ? "" : ", ") + text + " before " + before.first;
        }
        before = {text, point.at};
    }
    if (!order.empty()) {
        findings.push_back({Reason::PointsOutOfOrder, order});
    }
}

void check_points_of_others(const CheckedFile& file, std::int64_t delay,
                            std::vector<Finding>& findings) {
    constexpr std::int64_t kRounding = 10;  // two places are usual
    const auto agree = [](std::int64_t one, std::int64_t other) {
        return std::abs(one - other) <= kRounding;
    };
    std::string texts;
    for (const OtherPoint& other : kOtherPoints) {
        const std::int32_t ours = (file.header.*other.at)();
        const auto field = file.facts.custom(other.field);
        const auto theirs = field ? milliseconds_in(*field) : std::nullopt;
        // A point of 0 is none.
        if (ours == 0 || !theirs || agree(*theirs, ours) ||
            agree(*theirs, std::max<std::int64_t>(ours - delay, 0))) {
            continue;
        }
        texts += (texts.empty() ? "" : ", ") + std::string(other.name) + " at " +
                 milliseconds_text(ours) + ", " + printable(String(other.field)) + " at " +
                 milliseconds_text(*theirs);
    }
    if (!texts.empty()) {
        findings.push_back({Reason::PointsDisagree, texts});
    }
}

}  // namespace brindle::host
