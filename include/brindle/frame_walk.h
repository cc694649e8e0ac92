// How long the audio of a file really plays: every one of its frames is walked over and counted.
//
//     brindle::FrameWalk walk = brindle::walk_frames(header);
//     if (header.Duration() > walk.milliseconds) { ... dead air when the schedule runs on ... }
//
// Duration is what a file promises: by the header that its encoder left in the first frame, by its
// size at the bit rate of the first frame, or by the frames of a variable rate up to the first that
// is unlike the others. A file that was cut, spliced or left half written breaks that promise, and
// only a walk to its end tells.
//
// The walk begins at the first frame that the library accepts as audio and goes from each frame to
// the place where it ends. A frame counts there when its header is valid, has the version, layer
// and sampling frequency of the first one, and the frame is whole. (Bit rate, channel mode and
// flags may change on the way, as they may for a player.) Where no such frame stands, the next one
// is looked for byte by byte; it is taken for one when another header of the same kind, or the end
// of the audio, follows directly after it. The audio ends with the file, or where its ID3v1 record
// begins.
#pragma once

#include <cstdint>
#include <functional>
#include <span>

#include <brindle/export.h>

namespace brindle {

class cMPEGHeader;

struct FrameWalk {
    // Frames that are heard: whole ones, and not the first when it holds an encoder's header
    // ("Xing", "Info" or "VBRI") in place of sound.
    std::int64_t frames = 0;
    std::int32_t samples_per_frame = 0;  // of each channel; 0 without a stream
    std::int32_t frequency = 0;          // Hz; 0 without a stream
    // What all these samples take at that frequency, to the nearest whole number.
    std::int64_t milliseconds = 0;
    bool has_header_frame = false;

    // 0-based offsets in the file.
    std::int64_t first_frame = 0;  // of the first frame, also when it holds no sound
    std::int64_t end = 0;          // after the last whole frame

    std::int64_t gaps = 0;  // places between frames where something else stands
    std::int64_t bytes_in_gaps = 0;
    std::int64_t first_gap = 0;  // where the first of them begins; 0 without one

    // Bytes after the last whole frame: the beginning of a frame that is cut, or anything else,
    // such as tags of other programs.
    std::int64_t bytes_after = 0;
    bool last_frame_is_cut = false;

    friend bool operator==(const FrameWalk&, const FrameWalk&) = default;
};

// Reads the file as it stands, once from the first frame to the end, in blocks of 96 KiB and time
// linear in its length. Neither it nor `header` is changed, and no event is raised. Without a file
// open, or without a stream in it, everything is 0.
//
// Errors: those of opening and reading (7, 53, 57, 70, 75).
[[nodiscard]] BRINDLE_EXPORT FrameWalk walk_frames(const cMPEGHeader& header);

// A whole frame that the walk has come to.
struct WalkedFrame {
    std::int64_t offset;  // 0-based, in the file
    // From the first byte of its header to its last. Valid until the visitor returns.
    std::span<const std::uint8_t> bytes;
    // Holds an encoder's header in place of sound. Only the first frame can.
    bool is_header_frame;
    // Something else stands between this frame and the one before, so that data which a Layer III
    // frame shares with the frames before it is lost.
    bool follows_gap;
};

using FrameVisitor = std::function<void(const WalkedFrame& frame)>;

// The same walk, with the same answer: each whole frame is also handed to `visit`, in the order of
// the file, header frame included. Feeds decoders: one pass, whose memory does not depend on the
// length of the file. What `visit` throws ends the walk and is thrown on.
BRINDLE_EXPORT FrameWalk walk_frames(const cMPEGHeader& header, const FrameVisitor& visit);

}  // namespace brindle
