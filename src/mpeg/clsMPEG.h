// The analyser of MPEG audio streams.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include <brindle/error.h>
#include <brindle/values.h>

#include "mpeg/frame_header.h"
#include "mpeg/stream_state.h"
#include "util/environment.h"
#include "util/file_window.h"
#include "util/host.h"

namespace brindle {

// What SetFileName reads of the model of a file.
class ScannedFile {
public:
    ScannedFile() = default;
    ScannedFile(const ScannedFile&) = delete;
    ScannedFile& operator=(const ScannedFile&) = delete;
    virtual ~ScannedFile() = default;

    [[nodiscard]] virtual String FileName() const = 0;
    [[nodiscard]] virtual std::int32_t Id3v2TagSize() const = 0;
};

// Finds the first run of frames of a file, whether its bit rate varies, and how long it plays.
// No member throws; a file without a stream leaves the values of no stream.
class clsMPEG {
public:
    explicit clsMPEG(Environment& environment = system_environment())
        : environment_(&environment) {}

    // To be set before each file: the tag area in front of the audio, what follows it up to the
    // audio included, and whether the last 128 bytes are an ID3v1 record.
    std::int32_t ID3v2Length = 0;
    std::int32_t ID3v2Offset = 0;
    bool HasV1Tag = false;
    // Receives progress and may cancel. Not owned; may be missing.
    Host* Owner = nullptr;

    // As a new one.
    void forget();

    [[nodiscard]] String FileName() const { return state_.file_name; }
    void FileName(const String& Name);
    // What assigning the name does, over a file that is open already.
    void analyse(const String& name, FileWindow& window);
    // Looks after the model's tag first, then after ID3v2Length and ID3v2Offset. A header that
    // is still there from an earlier file stays.
    void SetFileName(const ScannedFile& id3v2);

    [[nodiscard]] std::int32_t HeaderStartPos() const { return state_.header.HeaderStartPos; }
    [[nodiscard]] std::int16_t MpegVersion() const { return state_.header.MpegVersion; }
    [[nodiscard]] std::int16_t MpegLayer() const { return state_.header.MpegLayer; }
    [[nodiscard]] std::int16_t Crc() const { return state_.header.Crc; }
    [[nodiscard]] std::int32_t SamplingFrequency() const { return state_.header.SamplingFrequency; }
    [[nodiscard]] std::int16_t Padding() const { return state_.header.Padding; }
    [[nodiscard]] std::int32_t ChannelMode() const { return state_.header.ChannelMode; }
    [[nodiscard]] std::int32_t CopyRight() const { return state_.header.CopyRight; }
    [[nodiscard]] std::int32_t Original() const { return state_.header.Original; }
    [[nodiscard]] std::int32_t Emphasis() const { return state_.header.Emphasis; }
    [[nodiscard]] bool VBR() const { return state_.header.VBR; }
    // Milliseconds; -1 when unknown.
    [[nodiscard]] std::int32_t DurationmS() const { return state_.duration_ms; }
    // A variable rate's average in kbit/s, a constant rate in bit/s.
    [[nodiscard]] std::int32_t BitRate() const;
    // Frames walked, or as a XING header tells; 0 for a constant bit rate.
    [[nodiscard]] std::int32_t FrameCounter() const { return state_.frame_counter; }
    [[nodiscard]] const FrameHeaderRecord& CurrentHeader() const { return state_.header; }

    // The accepted first frame's own offset, also where HeaderStartPos was set to 0 because the
    // frame lies in the file's second half. None without a stream.
    [[nodiscard]] std::optional<std::int32_t> accepted_position() const {
        return state_.accepted_position;
    }
    // Of what kinds the stream is: that of the accepted frame, and that of the run of frames by
    // which it was accepted. Without a stream they mean nothing.
    [[nodiscard]] StreamKinds stream_kinds() const;
    // What the file or a lack of memory raised during the last scan, as against a file that was
    // read well and holds no stream.
    [[nodiscard]] const std::optional<Error>& read_fault() const { return read_fault_; }

    // Helpers for hosts of this class; see duration.h and bit_digits.h.
    [[nodiscard]] static String SecsToTimeString(double& Secs);
    [[nodiscard]] static std::int64_t BinToDec(std::u16string_view BinValue);
    [[nodiscard]] static String ByteToBit(std::span<const std::uint8_t> ByteArray);

private:
    bool scan(const String& name, FileWindow& window, std::int32_t start);
    // Opens a file and runs a step over it.
    template <typename Step>
    void with_file(const String& name, Step&& step);

    Environment* environment_;  // never null
    StreamState state_;
    std::optional<Error> read_fault_;
};

}  // namespace brindle
