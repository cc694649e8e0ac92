#include "commands/check_file.h"

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <optional>
#include <string_view>
#include <utility>

#include <brindle/frame_walk.h>
#include <brindle/tag_facts.h>

#include "commands/encoder_header.h"
#include "commands/misread_frames.h"
#include "output/foreign_tags.h"
#include "output/printable_text.h"
#include "output/stream_text.h"
#include "output/tag_reading.h"
#include "system/file_access.h"
#include "system/input_file.h"

namespace brindle::host {

namespace {

using Findings = std::vector<Finding>;

std::string ms(std::int64_t milliseconds) {
    return std::to_string(milliseconds) + " ms";
}

// --- the tag

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
    if (has_id3v2(header) && is_tag_header(read_bytes(name, tag_size, kTagHeader))) {
        findings.push_back(
            {Reason::DuplicateTag, "a second ID3v2 tag at byte " + std::to_string(tag_size)});
    }
    if (tag_size > size) {
        findings.push_back(
            {Reason::TagLargerThanFile, "the ID3v2 tag claims " + std::to_string(tag_size) +
                                            " bytes of a file of " + std::to_string(size)});
    }
    if (is_corrupt(header)) {
        findings.push_back({Reason::CorruptTag, "hosts can't read the ID3v2 tag to its end"});
    }
    const TagFacts facts = read_tag_facts(header);
    const auto lacks = [&](const char16_t* id, const String& of_record) {
        return is_blank(facts.text(id).value_or(String())) && is_blank(of_record);
    };
    if (lacks(u"TIT2", header.Titlev1Tag())) {
        findings.push_back({Reason::NoTitle, "no title"});
    }
    if (lacks(u"TPE1", header.artistv1Tag())) {
        findings.push_back({Reason::NoArtist, "no artist"});
    }
}

constexpr std::int64_t kRecord = 128;

// What is at the end of the file besides audio. Returns the offset of the first of it.
std::int64_t check_tags_at_end(const cMPEGHeader& header, const std::string& name,
                               std::int64_t size, Findings& findings) {
    std::int64_t end = size;
    if (has_id3v1(header)) {
        end -= kRecord;
        if (end >= kRecord && read_bytes(name, end - kRecord, 3) == "TAG") {
            end -= kRecord;
            findings.push_back(
                {Reason::SecondRecord, "a second ID3v1 record at byte " + std::to_string(end)});
        }
    }
    const ForeignTags foreign = find_foreign_tags(name, end);
    const auto bytes_text = [](std::int64_t bytes) { return std::to_string(bytes) + " bytes"; };
    if (foreign.ape_bytes != 0) {
        findings.push_back({Reason::ApeTag, "an APEv2 tag of " + bytes_text(foreign.ape_bytes)});
    }
    if (foreign.lyrics3_bytes != 0) {
        findings.push_back(
            {Reason::Lyrics3Tag, "a Lyrics3 tag of " + bytes_text(foreign.lyrics3_bytes)});
    }
    return end - foreign.ape_bytes - foreign.lyrics3_bytes;
}

void check_frames_of_tag(const cMPEGHeader& header, Findings& findings) {
    const auto add = [&](Reason reason, const std::string& what,
                         const std::vector<std::string>& labels) {
        if (!labels.empty()) {
            findings.push_back({reason, what + comma_list(labels, std::identity())});
        }
    };
    const MisreadFrames frames = find_misread_frames(header);
    add(Reason::MisreadText, "hosts read another text: ", frames.misread_texts);
    add(Reason::UnreadText, "hosts do not read ", frames.unread_texts);
    add(Reason::LargePicture, "hosts do not read ", frames.large_pictures);
}

// --- the audio

// Saves work in a file of such a name until it takes the old one's place.
bool is_leftover(const std::string& name) {
    const std::size_t folder = name.find_last_of('/');
    return name.substr(folder == std::string::npos ? 0 : folder + 1).starts_with(".brindle-");
}

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

// The encoder's header frame is no junk, though hosts begin with the frame after it.
bool begins_with_header_frame(const cMPEGHeader& header, const FrameWalk& walk,
                              const std::string& name) {
    constexpr std::int64_t kLongestFrame = 2'881;
    const std::int64_t begin = has_id3v2(header) ? header.ID3TagSizeIncludingHeader() : 0;
    const std::int64_t length = walk.first_frame - begin;
    if (length < 0 || length > kLongestFrame) {
        return false;
    }
    const std::string bytes = read_bytes(name, begin, static_cast<std::size_t>(length));
    return length == 0 || encoder_header_in(bytes).has_value();
}

// What the frames tell on the way.
class FramesOnTheWay {
public:
    void operator()(const WalkedFrame& frame) {
        const std::string_view bytes(reinterpret_cast<const char*>(frame.bytes.data()),
                                     frame.bytes.size());
        if (frame.is_header_frame) {
            encoder_header_ = encoder_header_in(bytes);
            return;
        }
        constexpr std::size_t kModeByte = 3;
        constexpr unsigned kModeShift = 6;
        const unsigned mode = frame.bytes[kModeByte] >> kModeShift;
        mode_changes_ += last_mode_ && *last_mode_ != mode ? 1 : 0;
        last_mode_ = mode;
    }

    void tell(const FrameWalk& walk, Findings& findings) const {
        if (mode_changes_ > 0) {
            findings.push_back(
                {Reason::ChangingMode, "the channel mode changes " + std::to_string(mode_changes_) +
                                           (mode_changes_ == 1 ? " time" : " times")});
        }
        if (!encoder_header_ || !encoder_header_->frames) {
            return;
        }
        const std::int64_t promised = *encoder_header_->frames;
        const std::string counts = "the encoder counted " + std::to_string(promised) +
                                   " frames, there are " + std::to_string(walk.frames);
        // Some count their own frame, too.
        if (promised >= walk.frames + 2) {
            findings.push_back({Reason::AudioMissing, counts});
        } else if (promised < walk.frames - 1) {
            findings.push_back({Reason::HeaderMismatch, counts});
        }
    }

private:
    std::optional<EncoderHeader> encoder_header_;
    std::optional<unsigned> last_mode_;
    std::int64_t mode_changes_ = 0;
};

void check_frames(const cMPEGHeader& header, const FrameWalk& walk, const std::string& name,
                  std::int64_t end_of_audio, Findings& findings) {
    if (header.RepairRequired() && !begins_with_header_frame(header, walk, name)) {
        findings.push_back({Reason::JunkBeforeAudio, "audio does not begin where the tag ends"});
    }
    if (walk.gaps > 0) {
        findings.push_back({Reason::JunkBetweenFrames,
                            std::to_string(walk.bytes_in_gaps) + " bytes that are no audio, at " +
                                std::to_string(walk.gaps) +
                                (walk.gaps == 1 ? " place" : " places") + " from byte " +
                                std::to_string(walk.first_gap)});
    }
    if (!walk.last_frame_is_cut && walk.end < end_of_audio) {
        findings.push_back({Reason::JunkAfterAudio, std::to_string(end_of_audio - walk.end) +
                                                        " bytes that are no audio from byte " +
                                                        std::to_string(walk.end)});
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
    const std::int64_t end_of_audio = check_tags_at_end(header, name, size, findings);
    FramesOnTheWay frames;
    const FrameWalk walk = walk_frames(header, [&](const WalkedFrame& frame) { frames(frame); });
    if (walk.frequency == 0) {
        findings.push_back({Reason::NoStream, "no MPEG audio found"});
    } else {
        check_length(header.Duration(), walk.milliseconds, findings);
        check_points(header, walk.milliseconds, findings);
        check_frames(header, walk, name, end_of_audio, findings);
        frames.tell(walk, findings);
    }
    if (const std::string start = read_bytes(name, 0, 12);
        start.starts_with("RIFF") && start.ends_with("WAVE")) {
        findings.push_back({Reason::Wrapped, "a RIFF file"});
    }
    if (is_leftover(name)) {
        findings.push_back({Reason::Leftover, "a temporary file of brindle"});
    }
    check_tag(header, name, size, findings);
    check_frames_of_tag(header, findings);
    std::stable_sort(findings.begin(), findings.end(),
                     [](const Finding& a, const Finding& b) { return a.reason < b.reason; });
    return findings;
}

}  // namespace brindle::host
