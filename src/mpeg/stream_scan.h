// Finds the first real audio frame of a file and what the whole stream is.
#pragma once

#include <cstdint>
#include <optional>

#include <brindle/error.h>
#include <brindle/values.h>

#include "mpeg/frame_chain.h"
#include "mpeg/pacing.h"
#include "mpeg/stream_state.h"
#include "util/clock.h"
#include "util/file_window.h"
#include "util/host.h"

namespace brindle {

// Where the tags of the file lie.
struct TagPlaces {
    std::int32_t id3v2_length = 0;
    std::int32_t id3v2_offset = 0;
    bool has_id3v1 = false;

    [[nodiscard]] std::int64_t audio_start() const noexcept {
        return std::int64_t{id3v2_offset} + id3v2_length;
    }
};

// Means the position after the tag.
inline constexpr std::int32_t kStartBehindTag = -1;

class StreamScan {
public:
    // `name` is the one in the host's progress event.
    StreamScan(StreamState& state, const String& name, const TagPlaces& tags, FileWindow& window,
               Clock& clock, Host* host)
        : state_(state), name_(name), tags_(tags), window_(window), clock_(clock), host_(host) {}

    // Whether a stream was accepted. What a scan without one leaves in the state is the caller's
    // to reset. Never throws: an error that the file raised is kept.
    bool ScanFile(std::int32_t StartOffset);
    [[nodiscard]] const std::optional<Error>& read_fault() const noexcept { return read_fault_; }

private:
    enum class Attempt : std::uint8_t { First, TenBytesEarlier };

    // Runs a step; an error that it raises is kept and makes it false.
    template <typename Step>
    bool completes(Step&& step);

    bool scan(std::int32_t start, Attempt attempt);
    // A valid header of a frame that ends inside the file.
    std::optional<FrameHeader> header_at(std::int64_t position);
    [[nodiscard]] std::int32_t positions_without_header(std::int64_t position,
                                                        std::int32_t attempts) const;
    // The bytes from a position to the end of the audio.
    [[nodiscard]] std::int64_t audio_bytes_from(std::int64_t position) const;
    [[nodiscard]] bool is_in_second_half(std::int32_t position) const;
    // Makes the frame at `position` the current header, unless there is one already.
    void keep(std::int64_t position, const FrameHeader& header);
    XingRecord xing_header_of(std::int64_t position, const FrameHeader& header);
    bool finish_with_xing(XingRecord xing);
    void average_all_frames();
    bool finish_with_duration();

    StreamState& state_;
    const String& name_;
    const TagPlaces tags_;
    FileWindow& window_;
    Clock& clock_;
    Host* host_;
    std::optional<Error> read_fault_;
};

}  // namespace brindle
