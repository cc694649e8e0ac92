#include "commands/check_points.h"

#include <string>
#include <utility>

#include "commands/bridged_points.h"
#include "output/printable_text.h"
#include "output/stream_text.h"

namespace brindle::host {

namespace {

struct Point {
    const char* name;
    std::int32_t at;
    Reason beyond_end;
};

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

void check_points_of_others(const CheckedFile& file, const PlayingTime& time,
                            std::vector<Finding>& findings) {
    const auto found = disagreements(host_points(file.header), file.facts, time);
    if (found.empty()) {
        return;
    }
    const std::string texts = comma_list(found, [](const SharedPoint& point) {
        return std::string(point.brindle_name) + " at " + milliseconds_text(point.ours) + ", " +
               point.system_name + " at " + milliseconds_text(point.theirs);
    });
    findings.push_back({Reason::PointsDisagree, texts});
}

}  // namespace brindle::host
