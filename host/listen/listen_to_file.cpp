#include "listen_to_file.h"

#include <algorithm>
#include <deque>
#include <span>
#include <utility>
#include <vector>

#include <brindle/frame_walk.h>

#include "frame_decoder.h"
#include "listener.h"
#include "replay_gain.h"
#include "stream_format.h"

namespace brindle::host {

// Decodes frames during the walk, and records those that can't be decoded.
class FileListening::State {
public:
    State(std::int64_t bytes, const ListenOptions& options) : bytes_(bytes), options_(options) {}

    void visit(const WalkedFrame& frame) {
        if (frame.is_header_frame) {
            delay_ = read_encoder_delay(frame.bytes);
            return;
        }
        if (!format_) {
            begin(frame);
        }
        ++walked_;
        if (options_.quick && walked_ > most_at_ends_) {
            keep(frame);
        } else {
            listen(frame.bytes, frame.offset, frame.follows_gap);
        }
    }

    std::optional<Listening> conclude(const cMPEGHeader& header, const FrameWalk& walk) {
        if (!format_) {
            return std::nullopt;
        }
        listen_to_kept();
        if (!has_sound_) {
            undecoded_.count += frames_cut_off_;
            frames_cut_off_ = 0;
        }
        Listening heard = listener_->conclude(
            options_, options_.quick ? loudness_by_replay_gain(header) : std::nullopt);
        heard.milliseconds = walk.milliseconds;
        heard.delay = format_->layer == 3 ? delay_ : EncoderDelay();
        heard.undecoded = undecoded_;
        heard.frames_cut_off = frames_cut_off_;
        return heard;
    }

private:
    struct KeptFrame {
        std::vector<std::uint8_t> bytes;
        std::int64_t offset;
        bool follows_gap;
    };

    static constexpr std::int64_t kSecondsAtEnds = 60;
    // Before what is listened to at the end: frames that fill the reservoir and the filters. The
    // shortest give it three bytes each.
    static constexpr std::int64_t kRunUp = 100;

    void begin(const WalkedFrame& frame) {
        format_ = stream_format(frame.bytes);
        most_at_ends_ = kSecondsAtEnds * format_->frequency / format_->samples_per_frame;
        decoder_.emplace(*format_);
        listener_.emplace(*format_, options_.quick ? MeterMode::Quick : MeterMode::Whole,
                          longest_milliseconds());
    }

    // Of that many bytes at the lowest bit rate.
    [[nodiscard]] std::int64_t longest_milliseconds() const {
        const std::int64_t bytes_per_millisecond = format_->is_mpeg1 ? 4 : 1;
        return bytes_ / bytes_per_millisecond;
    }

    [[nodiscard]] std::int64_t samples(std::int64_t frames) const {
        return frames * format_->samples_per_frame;
    }

    void listen(std::span<const std::uint8_t> frame, std::int64_t offset, bool follows_gap) {
        const auto decoded = decode(frame, follows_gap);
        if (decoded.fault) {
            note(*decoded.fault, offset);
        } else {
            has_sound_ = true;
        }
        listener_->add(decoded.samples);
        ++played_;
    }

    FrameDecoder::Decoded decode(std::span<const std::uint8_t> frame, bool follows_gap) {
        if (follows_gap) {
            decoder_->lose_reservoir();
        }
        return decoder_->decode(frame);
    }

    void note(DecodeFault fault, std::int64_t offset) {
        constexpr std::int64_t kMillisecondsPerSecond = 1'000;
        if (undecoded_.count == 0 && (has_sound_ || frames_cut_off_ == 0)) {
            undecoded_.offset = offset;
            undecoded_.milliseconds =
                samples(played_) * kMillisecondsPerSecond / format_->frequency;
            undecoded_.fault = fault;
        }
        const bool is_cut_off = !has_sound_ && fault == DecodeFault::MissingData;
        ++(is_cut_off ? frames_cut_off_ : undecoded_.count);
    }

    void keep(const WalkedFrame& frame) {
        if (kept_.size() == static_cast<std::size_t>(most_at_ends_ + kRunUp)) {
            // Reuses its memory.
            KeptFrame first = std::move(kept_.front());
            kept_.pop_front();
            first.bytes.assign(frame.bytes.begin(), frame.bytes.end());
            first.offset = frame.offset;
            first.follows_gap = frame.follows_gap;
            kept_.push_back(std::move(first));
        } else {
            kept_.push_back(
                {{frame.bytes.begin(), frame.bytes.end()}, frame.offset, frame.follows_gap});
        }
    }

    void listen_to_kept() {
        const auto kept = static_cast<std::int64_t>(kept_.size());
        const std::int64_t skipped = walked_ - played_ - kept;
        std::int64_t run_up = 0;
        if (skipped > 0) {
            run_up = kRunUp;
            decoder_->lose_reservoir();
            listener_->skip(samples(skipped + run_up));
            played_ += skipped + run_up;
        }
        for (const KeptFrame& frame : kept_) {
            if (run_up > 0) {
                static_cast<void>(decode(frame.bytes, frame.follows_gap));
                --run_up;
            } else {
                listen(frame.bytes, frame.offset, frame.follows_gap);
            }
        }
    }

    const std::int64_t bytes_;
    const ListenOptions options_;
    EncoderDelay delay_;
    std::optional<StreamFormat> format_;
    std::int64_t most_at_ends_ = 0;  // frames
    std::optional<FrameDecoder> decoder_;
    std::optional<Listener> listener_;
    std::int64_t walked_ = 0;
    std::int64_t played_ = 0;  // frames that have been played
    bool has_sound_ = false;   // a frame was decoded
    UndecodedFrames undecoded_;
    std::int64_t frames_cut_off_ = 0;
    std::deque<KeptFrame> kept_;
};

FileListening::FileListening(std::int64_t bytes, const ListenOptions& options)
    : state_(std::make_unique<State>(bytes, options)) {}

FileListening::~FileListening() = default;

void FileListening::visit(const WalkedFrame& frame) {
    state_->visit(frame);
}

std::optional<Listening> FileListening::conclude(const cMPEGHeader& header, const FrameWalk& walk) {
    return state_->conclude(header, walk);
}

std::optional<std::string> reason_against_listening() {
    return std::nullopt;
}

std::optional<Listening> listen_to_file(const cMPEGHeader& header, std::int64_t bytes,
                                        const ListenOptions& options) {
    FileListening listening(bytes, options);
    const FrameWalk walk =
        walk_frames(header, [&](const WalkedFrame& frame) { listening.visit(frame); });
    return listening.conclude(header, walk);
}

}  // namespace brindle::host
