// What the analyser tells a developer who hangs a hook on it.
#pragma once

#include <functional>
#include <string_view>

namespace brindle {

// Unset by default; the walks then pay one test per chain of frames, not one per frame.
using Trace = std::function<void(std::string_view)>;

inline void write_trace(const Trace& trace, std::string_view text) {
    if (trace) {
        trace(text);
    }
}

namespace trace_text {

inline constexpr std::string_view kFirstByte = "DecodeFrameHeader: first byte is NOT sync!";
inline constexpr std::string_view kSecondByte = "DecodeFrameHeader: second byte is NOT sync!";
inline constexpr std::string_view kVersion = "DecodeFrameHeader: MPEGVersion is illegal!";
inline constexpr std::string_view kLayer = "DecodeFrameHeader: MPEG Layer is illegal!";
inline constexpr std::string_view kBitRate = "DecodeFrameHeader: Bitrate is illegal!";
inline constexpr std::string_view kSampleRate = "DecodeFrameHeader: SampleRate is illegal!";
inline constexpr std::string_view kEmphasis = "DecodeFrameHeader: Emphasis is illegal!";
inline constexpr std::string_view kDecodeFailed = "DECODE FRAME HEADER FAILED! ";
inline constexpr std::string_view kDigitsFailed = "Failed In TwoBitToDec";

inline constexpr std::string_view kOtherSampleRate =
    "FrameHeadersAgree: NO AGREEMENT on SampleRate!";
inline constexpr std::string_view kOtherVersion = "FrameHeadersAgree: NO AGREEMENT on MpegVersion!";
inline constexpr std::string_view kOtherMode = "FrameHeadersAgree: NO AGREEMENT on CHANNELMODE!";
inline constexpr std::string_view kOtherEmphasis = "FrameHeadersAgree: NO AGREEMENT on EMPH!";
inline constexpr std::string_view kOtherLayer = "FrameHeadersAgree: NO AGREEMENT on LAYER!";
inline constexpr std::string_view kOtherCopyright = "FrameHeadersAgree: NO AGREEMENT on COPYRIGHT!";
inline constexpr std::string_view kOtherOriginal = "FrameHeadersAgree: NO AGREEMENT on ORIGINAL!";

inline constexpr std::string_view kBailed = "FindConsec: bailed at offset: ";
inline constexpr std::string_view kSlowChain =
    "Doing events: Find Consecutive Frames taking ages: ";
inline constexpr std::string_view kTryingEarlier =
    "Trying 10 bytes earlier - to check for incorrect id3v2 size...";
inline constexpr std::string_view kNoFrames = "No consecutive valid frames found for::::";
inline constexpr std::string_view kPossibly = "Possibly, ";
inline constexpr std::string_view kIsVbr = " is VBR!!!";

}  // namespace trace_text

}  // namespace brindle
