#include "commands/check_audio.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>
#include <string_view>
#include <utility>

#include <brindle/frame_walk.h>

#include "commands/bridged_points.h"
#include "commands/check_tags.h"
#include "commands/encoder_header.h"
#include "commands/frame_crc.h"
#include "commands/frame_search.h"
#include "commands/mpeg_frame.h"
#include "listen/encoder_delay.h"
#include "output/printable_text.h"
#include "output/stream_text.h"

namespace brindle::host {

namespace {

using Findings = std::vector<Finding>;

// An inaudible difference: a tenth of a second, or a second in three minutes and twenty.
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
    const std::string lengths =
        "promises " + milliseconds_text(promised) + ", plays " + milliseconds_text(exact) + ": ";
    if (promised > exact) {
        findings.push_back(
            {Reason::DeadAir, lengths + milliseconds_text(difference) + " of dead air"});
    } else {
        findings.push_back(
            {Reason::EndCutOff, lengths + milliseconds_text(difference) + " cut off"});
    }
}

void check_frame_count(const EncoderHeader& header, std::int64_t frames, Findings& findings) {
    if (!header.frames) {
        return;
    }
    const std::string counts = "the encoder counted " + std::to_string(*header.frames) +
                               " frames, there are " + std::to_string(frames);
    // Some encoders count their own frame, too.
    if (*header.frames >= frames + 2) {
        findings.push_back({Reason::AudioMissing, counts});
    } else if (*header.frames < frames - 1) {
        findings.push_back({Reason::HeaderMismatch, counts});
    }
}

// Some encoders count their own frame, some the tags at the end.
void check_byte_count(const EncoderHeader& header, std::int64_t header_frame, std::int64_t audio,
                      std::int64_t tags, Findings& findings) {
    if (!header.bytes) {
        return;
    }
    const std::int64_t counted = *header.bytes;
    const bool fits = counted == audio || counted == audio - header_frame ||
                      counted == audio + tags || counted == audio - header_frame + tags;
    if (!fits) {
        findings.push_back(
            {Reason::HeaderMismatch, "the encoder counted " + std::to_string(counted) +
                                         " bytes, there are " + std::to_string(audio)});
    }
}

Finding junk_between_frames(std::int64_t bytes, std::int64_t places, std::int64_t first) {
    return {Reason::JunkBetweenFrames, std::to_string(bytes) + " bytes that are not audio, at " +
                                           counted(places, "place") + " from byte " +
                                           std::to_string(first)};
}

Finding junk_after_audio(std::int64_t begin, std::int64_t end) {
    return {Reason::JunkAfterAudio, std::to_string(end - begin) +
                                        " bytes that are not audio from byte " +
                                        std::to_string(begin)};
}

Finding cut_last_frame(std::int64_t bytes) {
    return {Reason::CutLastFrame, "the last frame ends after " + std::to_string(bytes) + " bytes"};
}

Finding junk_before_audio() {
    return {Reason::JunkBeforeAudio, "audio does not begin where the tag ends"};
}

Finding changing_format(const MpegFrame& from, const MpegFrame& to, const std::string& where) {
    return {Reason::ChangingFormat, from.text() + " changes to " + to.text() + where};
}

// Facts about the frames and the bytes between them, from one walk.
class AudioOnTheWay {
public:
    explicit AudioOnTheWay(FileBytes& file) : file_(file) {}

    void operator()(const WalkedFrame& frame) {
        const std::string_view bytes(reinterpret_cast<const char*>(frame.bytes.data()),
                                     frame.bytes.size());
        if (!first_frame_) {
            first_frame_ = mpeg_frame_in(bytes);
        }
        if (frame.follows_gap) {
            take_gap(end_, frame.offset);
        }
        end_ = frame.offset + static_cast<std::int64_t>(bytes.size());
        if (frame.is_header_frame) {
            encoder_header_ = encoder_header_in(bytes);
            delay_ = read_encoder_delay(frame.bytes);
            header_frame_ = {frame.offset, end_};
            return;
        }
        constexpr std::size_t kModeByte = 3;
        constexpr unsigned kModeShift = 6;
        const unsigned mode = frame.bytes[kModeByte] >> kModeShift;
        mode_changes_ += last_mode_ && *last_mode_ != mode ? 1 : 0;
        last_mode_ = mode;
        // Most files have no checksums.
        if (!MpegFrame::lacks_crc(bytes) && frame_crc_fits(bytes) == false) {
            first_wrong_crc_ = wrong_crcs_ == 0 ? frame.offset : first_wrong_crc_;
            ++wrong_crcs_;
        }
    }

    // Bytes without a frame of the stream.
    void take_gap(std::int64_t begin, std::int64_t end) {
        const FoundFrames found = take_other_frames(begin, end);
        const std::int64_t junk = end - begin - found.bytes;
        if (junk > 0) {
            const bool begins_with_frames = found.runs == 1 && found.first == begin;
            first_junk_ =
                junk_places_ == 0 ? begin + (begins_with_frames ? found.bytes : 0) : first_junk_;
            ++junk_places_;
            junk_bytes_ += junk;
        }
    }

    // What is before the frame that hosts begin with. True when all of it is frames: of another
    // kind, of another channel mode than those after them, or the encoder's header frame.
    bool take_beginning(std::int64_t begin, std::int64_t end) {
        const auto head = static_cast<std::size_t>(std::min(end - begin, MpegFrame::kLongest));
        const std::string bytes = file_.read(begin, head);
        if (const auto frame = mpeg_frame_in(bytes); frame && !frame->is_free_format()) {
            const auto length = std::min(bytes.size(), static_cast<std::size_t>(frame->length));
            if (const auto header = encoder_header_in(std::string_view(bytes).substr(0, length))) {
                encoder_header_ = header;
                header_frame_ = {begin, begin + static_cast<std::int64_t>(length)};
                begin += static_cast<std::int64_t>(length);
            }
        }
        return take_other_frames(begin, end).bytes == end - begin;
    }

    // Frames that do not belong to the stream.
    FoundFrames take_other_frames(std::int64_t begin, std::int64_t end) {
        FoundFrames found = find_frames(file_, begin, end);
        other_frames_ += found.frames;
        other_seconds_ += found.seconds;
        if (found.frames == 0) {
            return found;
        }
        const auto other =
            is_same_kind(*found.first_frame, *first_frame_) ? found.other_kind : found.first_frame;
        if (!other) {
            mode_changes_ += found.first_frame->mode() != first_frame_->mode() ? 1 : 0;
        } else if (!other_frame_) {
            other_frame_ = other;
            first_other_ = found.first;
        }
        return found;
    }

    [[nodiscard]] const EncoderDelay& delay() const { return delay_; }

    [[nodiscard]] std::int64_t other_milliseconds() const {
        constexpr double kMillisecondsPerSecond = 1'000;
        return std::llround(other_seconds_ * kMillisecondsPerSecond);
    }

    void tell(const FrameWalk& walk, std::int64_t size, Findings& findings) const {
        if (junk_places_ > 0) {
            findings.push_back(junk_between_frames(junk_bytes_, junk_places_, first_junk_));
        }
        if (other_frame_) {
            findings.push_back(changing_format(*first_frame_, *other_frame_,
                                               ", " + counted(other_frames_, "frame") +
                                                   " from byte " + std::to_string(first_other_)));
        }
        if (mode_changes_ > 0) {
            findings.push_back({Reason::ChangingMode,
                                "the channel mode changes " + counted(mode_changes_, "time")});
        }
        if (encoder_header_) {
            const std::size_t before = findings.size();
            check_frame_count(*encoder_header_, walk.frames + other_frames_, findings);
            if (findings.size() == before) {
                check_byte_count(*encoder_header_, header_frame_.end - header_frame_.begin,
                                 walk.end - header_frame_.begin - junk_bytes_, size - walk.end,
                                 findings);
            }
        }
        tell_crc(walk.frames, findings);
    }

private:
    void tell_crc(std::int64_t frames, Findings& findings) const {
        constexpr std::int64_t kBadShare = 100;  // 1 %
        if (wrong_crcs_ == 0) {
            return;
        }
        findings.push_back(
            {wrong_crcs_ * kBadShare >= frames ? Reason::FrameCrc : Reason::FewFrameCrc,
             "the checksum of " + std::to_string(wrong_crcs_) + " of " + counted(frames, "frame") +
                 " is wrong, from byte " + std::to_string(first_wrong_crc_)});
    }

    FileBytes& file_;
    std::optional<MpegFrame> first_frame_;
    std::int64_t end_ = 0;  // of the frame before
    struct Place {
        std::int64_t begin = 0;
        std::int64_t end = 0;
    };

    std::optional<EncoderHeader> encoder_header_;
    EncoderDelay delay_;
    Place header_frame_;
    std::optional<unsigned> last_mode_;
    std::int64_t mode_changes_ = 0;
    std::int64_t wrong_crcs_ = 0;
    std::int64_t first_wrong_crc_ = 0;
    std::int64_t junk_places_ = 0;
    std::int64_t junk_bytes_ = 0;
    std::int64_t first_junk_ = 0;
    std::optional<MpegFrame> other_frame_;
    std::int64_t other_frames_ = 0;
    std::int64_t first_other_ = 0;
    double other_seconds_ = 0;
};

// --- before and after the stream

void check_beginning(CheckedFile& file, const FrameWalk& walk, AudioOnTheWay& audio,
                     Findings& findings) {
    if (!file.header.RepairRequired()) {
        return;
    }
    const std::int64_t begin = has_id3v2(file.header) ? file.header.ID3TagSizeIncludingHeader() : 0;
    if (begin > walk.first_frame || !audio.take_beginning(begin, walk.first_frame)) {
        findings.push_back(junk_before_audio());
    }
}

void check_end(CheckedFile& file, const FrameWalk& walk, AudioOnTheWay& audio, Findings& findings) {
    const std::int64_t record = has_id3v1(file.header) ? kId3v1Bytes : 0;
    const std::int64_t end =
        walk.end < file.size - record ? check_tags_at_end(file, findings) : walk.end;
    if (walk.last_frame_is_cut) {
        findings.push_back(cut_last_frame(walk.bytes_after));
    } else if (walk.end < end) {
        const std::int64_t junk = end - walk.end - audio.take_other_frames(walk.end, end).bytes;
        if (junk > 0) {
            findings.push_back(junk_after_audio(end - junk, end));
        }
    }
}

// --- no stream

struct Playable {
    std::int64_t begin = 0;  // of the range that was searched
    std::int64_t end = 0;
    FoundFrames found;
    std::optional<EncoderHeader> encoder_header;
};

Finding not_playable(std::string why, std::string remedy) {
    return {Reason::NotPlayableByHosts, std::move(why), std::move(remedy)};
}

// Why hosts do not find the stream.
Finding find_obstacle(const CheckedFile& file, const Playable& playable) {
    constexpr std::int64_t kFewestFrames = 11;
    constexpr std::int64_t kMaxPositions = 16'384;
    constexpr std::int64_t kLongestFile = std::numeric_limits<std::int32_t>::max();
    const auto bytes = [](std::int64_t count) { return std::to_string(count) + " bytes"; };
    const std::int64_t tag = file.header.ID3TagSizeIncludingHeader();
    if (file.size > kLongestFile) {
        return not_playable(
            "the file has " + bytes(file.size) + ", hosts read " + std::to_string(kLongestFile),
            "split it");
    }
    if (playable.encoder_header && playable.encoder_header->bytes.value_or(0) > file.size) {
        return not_playable("the Xing header promises " + bytes(*playable.encoder_header->bytes) +
                                " of a file of " + std::to_string(file.size),
                            "it is incomplete; fetch it again, or encode it again as it is");
    }
    if (tag * 2 > file.size) {
        return not_playable("the ID3v2 tag takes " + bytes(tag) + " of " +
                                std::to_string(file.size) + ", more than half of the file",
                            "remove pictures");
    }
    if (playable.found.frames < kFewestFrames) {
        return not_playable(counted(playable.found.frames, "frame") + " of audio, hosts need " +
                                std::to_string(kFewestFrames),
                            "add silence");
    }
    if (const std::int64_t junk = playable.found.first - playable.begin; junk > kMaxPositions) {
        return not_playable(bytes(junk) + " before the first frame, hosts give up after " +
                                std::to_string(kMaxPositions),
                            "remove them");
    }
    if (playable.found.runs > 1) {
        return not_playable("bytes that are not audio break the run of frames that hosts look for",
                            "remove them");
    }
    return not_playable("hosts find no run of frames that agree", "encode the file again");
}

void check_surroundings(CheckedFile& file, const Playable& playable, Findings& findings) {
    const FoundFrames& found = playable.found;
    if (found.first > playable.begin) {
        findings.push_back(junk_before_audio());
    }
    if (found.runs > 1) {
        const std::int64_t junk = found.end - found.first - found.bytes;
        findings.push_back(junk_between_frames(junk, found.runs - 1, found.first_run_end));
    }
    if (found.end < playable.end) {
        const auto next = mpeg_frame_in(file.bytes.read(found.end, MpegFrame::kHeaderBytes));
        const bool is_cut = next && is_same_kind(*next, *found.first_frame) &&
                            found.end + next->length > playable.end;
        findings.push_back(is_cut ? cut_last_frame(playable.end - found.end)
                                  : junk_after_audio(found.end, playable.end));
    }
}

void check_without_stream(CheckedFile& file, Findings& findings) {
    constexpr std::int64_t kCertain = 3;
    const std::int64_t tag = file.header.ID3TagSizeIncludingHeader();
    const std::int64_t end = check_tags_at_end(file, findings);
    Playable playable{has_id3v2(file.header) && tag < end ? tag : 0, end, {}, {}};
    playable.found = find_frames(file.bytes, playable.begin, end);
    const FoundFrames& found = playable.found;
    if (found.frames < kCertain) {
        if (const auto free_format = find_free_format(file.bytes, playable.begin)) {
            findings.push_back({Reason::FreeFormat, free_format->text() + " in free format"});
            return;
        }
    }
    if (found.frames == 0) {
        findings.push_back({Reason::NoStream, "no MPEG audio found"});
        return;
    }
    const auto first_length = static_cast<std::size_t>(found.first_frame->length);
    playable.encoder_header = encoder_header_in(file.bytes.read(found.first, first_length));
    findings.push_back(find_obstacle(file, playable));
    check_surroundings(file, playable, findings);
    if (playable.encoder_header) {
        check_frame_count(*playable.encoder_header, found.frames - 1, findings);
    }
    if (found.other_kind) {
        findings.push_back(changing_format(*found.first_frame, *found.other_kind, ""));
    }
}

}  // namespace

std::optional<CheckedAudio> check_audio(CheckedFile& file, FileListening* listening,
                                        Findings& findings) {
    AudioOnTheWay audio(file.bytes);
    const FrameWalk walk = walk_frames(file.header, [&](const WalkedFrame& frame) {
        audio(frame);
        if (listening != nullptr) {
            listening->visit(frame);
        }
    });
    if (walk.frequency == 0) {
        check_without_stream(file, findings);
        return std::nullopt;
    }
    check_beginning(file, walk, audio, findings);
    check_end(file, walk, audio, findings);
    audio.tell(walk, file.size, findings);
    const std::int64_t exact = walk.milliseconds + audio.other_milliseconds();
    check_length(file.header.Duration(), exact, findings);
    return CheckedAudio{
        exact, playing_time(walk, audio.delay()),
        listening != nullptr ? listening->conclude(file.header, walk) : std::nullopt};
}

}  // namespace brindle::host
