#include "check_file.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <utility>

#include <brindle/frame_walk.h>

#include "corrupt_tag.h"
#include "file_access.h"
#include "input_file.h"
#include "misread_frames.h"

namespace brindle::host {

namespace {

using Findings = std::vector<Finding>;

std::string ms(std::int64_t milliseconds) {
    return std::to_string(milliseconds) + " ms";
}

std::string joined(const std::vector<std::string>& labels) {
    std::string text;
    for (const std::string& label : labels) {
        text += (text.empty() ? "" : ", ") + label;
    }
    return text;
}

// --- the tag

bool has_tag(const cMPEGHeader& header) {
    const eTagType type = header.TagType();
    return type == v2TagOnly || type == v1andv2TagsBothPresent;
}

bool is_tag_header(std::string_view bytes) {
    constexpr std::size_t kVersion = 3;
    return bytes.size() > kVersion && bytes.starts_with("ID3") && bytes[kVersion] >= 2 &&
           bytes[kVersion] <= 4;
}

bool is_blank(const String& text) {
    return text.find_first_not_of(u" \t\r\n") == String::npos;
}

void check_tag(const cMPEGHeader& header, const std::string& name, std::int64_t size,
               Findings& findings) {
    constexpr std::size_t kTagHeader = 10;
    const std::int32_t tag_size = header.ID3TagSizeIncludingHeader();
    if (has_tag(header) && is_tag_header(read_bytes(name, tag_size, kTagHeader))) {
        findings.push_back(
            {Reason::DuplicateTag, "a second ID3v2 tag at byte " + std::to_string(tag_size)});
    }
    if (tag_size > size) {
        findings.push_back(
            {Reason::TagLargerThanFile, "the ID3v2 tag claims " + std::to_string(tag_size) +
                                            " bytes of a file of " + std::to_string(size)});
    }
    if (is_corrupt(header)) {
        findings.push_back({Reason::CorruptTag, "the ID3v2 tag can't be read to its end"});
        return;  // title and artist are the stamp
    }
    if (is_blank(header.Title()) && is_blank(header.Titlev1Tag())) {
        findings.push_back({Reason::NoTitle, "no title"});
    }
    if (is_blank(header.Artist()) && is_blank(header.artistv1Tag())) {
        findings.push_back({Reason::NoArtist, "no artist"});
    }
}

void check_frames_of_tag(const cMPEGHeader& header, Findings& findings) {
    const auto add = [&](Reason reason, const std::string& what,
                         const std::vector<std::string>& labels) {
        if (!labels.empty()) {
            findings.push_back({reason, what + joined(labels)});
        }
    };
    const MisreadFrames frames = find_misread_frames(header);
    add(Reason::MisreadText, "hosts read another text: ", frames.misread_texts);
    add(Reason::UnreadText, "hosts do not read ", frames.unread_texts);
    add(Reason::LargePicture, "hosts do not read ", frames.large_pictures);
}

// --- the audio

// What nobody hears: a tenth of a second, or a second in three minutes and twenty.
bool is_noticed(std::int64_t difference, std::int64_t exact) {
    constexpr std::int64_t kLeast = 100;
    constexpr std::int64_t kShare = 200;  // 0.5 %
    return difference > kLeast && difference * kShare > exact;
}

void check_length(std::int64_t promised, std::int64_t exact, Findings& findings) {
    const std::int64_t difference = std::abs(promised - exact);
    if (!is_noticed(difference, exact)) {
        return;
    }
    const std::string lengths = "promises " + ms(promised) + ", plays " + ms(exact) + ": ";
    if (promised > exact) {
        findings.push_back({Reason::DeadAir, lengths + ms(difference) + " of dead air"});
    } else {
        findings.push_back({Reason::EndCutOff, lengths + ms(difference) + " cut off"});
    }
}

struct Point {
    const char* name;
    std::int32_t at;
    Reason beyond_end;
};

void check_points(const cMPEGHeader& header, std::int64_t exact, Findings& findings) {
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
        const std::string text = std::string(point.name) + " at " + ms(point.at);
        if (point.at > exact) {
            findings.push_back({point.beyond_end, text + ", the audio ends at " + ms(exact)});
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

void check_frames(const cMPEGHeader& header, const FrameWalk& walk, Findings& findings) {
    if (header.RepairRequired()) {
        findings.push_back({Reason::JunkBeforeAudio, "audio does not begin where the tag ends"});
    }
    if (walk.gaps > 0) {
        findings.push_back({Reason::JunkBetweenFrames,
                            std::to_string(walk.bytes_in_gaps) + " bytes that are no audio, at " +
                                std::to_string(walk.gaps) +
                                (walk.gaps == 1 ? " place" : " places") + " from byte " +
                                std::to_string(walk.first_gap)});
    }
    if (walk.last_frame_is_cut) {
        findings.push_back(
            {Reason::CutLastFrame,
             "the last frame ends after " + std::to_string(walk.bytes_behind) + " bytes"});
    }
}

}  // namespace

Findings check_file(const cMPEGHeader& header, const std::string& name, std::int64_t size) {
    Findings findings;
    const FrameWalk walk = walk_frames(header);
    if (walk.frequency == 0) {
        findings.push_back({Reason::NoStream, "no MPEG audio found"});
    } else {
        check_length(header.Duration(), walk.milliseconds, findings);
        check_points(header, walk.milliseconds, findings);
        check_frames(header, walk, findings);
    }
    check_tag(header, name, size, findings);
    check_frames_of_tag(header, findings);
    std::stable_sort(findings.begin(), findings.end(),
                     [](const Finding& a, const Finding& b) { return a.reason < b.reason; });
    return findings;
}

}  // namespace brindle::host
