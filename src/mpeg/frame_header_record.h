// The header that is kept: every field by its name, decoded through a text of binary digits.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include <brindle/values.h>

#include "mpeg/frame_header.h"
#include "mpeg/trace.h"
#include "util/file_window.h"

namespace brindle {

// A record of no header is what the members say here.
struct FrameHeaderRecord {
    std::array<std::uint8_t, kHeaderBytes> HeaderBytes{};
    std::int32_t HeaderStartPos = 0;  // 0-based offset in the file
    String HeaderBits;
    std::int16_t MpegVersion = 0;  // 1, 2, or 25 for MPEG 2.5
    std::int16_t MpegLayer = 0;
    std::int16_t Crc = 0;      // bytes of it behind the header: 0 or 2
    std::int32_t BitRate = 0;  // kbit/s
    std::int32_t SamplingFrequency = 0;
    std::int16_t Padding = 0;  // 0, 1, or 2 for Layer I
    std::int32_t ChannelMode = -1;
    std::int32_t CopyRight = -1;
    std::int32_t Original = -1;
    std::int32_t Emphasis = 2;
    std::int16_t FrameLength = 0;
    bool VBR = false;
    std::vector<std::uint8_t> FrameData;  // the frame behind its header
};

// Decodes `HeaderBytes` into the other fields; with a file also reads `FrameData`, which lies
// behind `HeaderStartPos`. False for the first rule that is broken, and where the file ends inside
// the frame; the fields are then filled as far as it went.
bool DecodeFrameHeader(FrameHeaderRecord& record, FileWindow* file, const Trace& trace);

}  // namespace brindle
