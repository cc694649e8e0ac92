// Where the analyser and the reference disagree about a file.
#pragma once

#include <string>

#include "mpeg/clsMPEG.h"
#include "mpeg/reference_analyser.h"

namespace brindle::test {

// The first value that differs, with both sides; empty when all are the same.
inline std::string difference(const clsMPEG& analyser, const ReferenceAnalyser& reference) {
    const struct {
        const char* name;
        std::int64_t found;
        std::int64_t expected;
    } values[] = {
        {"found", !analyser.FileName().empty(), reference.found},
        {"HeaderStartPos", analyser.HeaderStartPos(), reference.HeaderStartPos},
        {"VBR", analyser.VBR(), reference.VBR},
        {"BitRate", analyser.BitRate(), reference.BitRate()},
        {"CurrentHeader.BitRate", analyser.CurrentHeader().BitRate, reference.header.kbps},
        {"DurationmS", analyser.DurationmS(), reference.DurationmS},
        {"FrameCounter", analyser.FrameCounter(), reference.FrameCounter},
        {"MpegVersion", analyser.MpegVersion(), reference.header.version},
        {"MpegLayer", analyser.MpegLayer(), reference.header.layer},
        {"SamplingFrequency", analyser.SamplingFrequency(), reference.header.frequency},
        {"Padding", analyser.Padding(), reference.header.padding},
        {"accepted_position", analyser.accepted_position().has_value(), reference.found},
        {"read_fault", analyser.read_fault().has_value(), false},
    };
    for (const auto& value : values) {
        if (value.found != value.expected) {
            return std::string(value.name) + ": " + std::to_string(value.found) + ", expected " +
                   std::to_string(value.expected);
        }
    }
    return {};
}

}  // namespace brindle::test
