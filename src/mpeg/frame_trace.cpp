#include "mpeg/frame_trace.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "mpeg/frame_header.h"
#include "mpeg/frame_header_record.h"

namespace brindle {
namespace {

// Where two headers of valid frames differ, in the order of the rules. They must not agree.
std::string_view disagreement(std::uint32_t a, std::uint32_t b) {
    struct Rule {
        std::uint32_t mask;
        std::string_view text;
    };
    // Versions have no sampling frequency in common.
    static constexpr std::array<Rule, 7> kRules = {{
        {kFrequencyMask | kVersionMask, trace_text::kOtherSampleRate},
        {kVersionMask, trace_text::kOtherVersion},
        {kModeMask, trace_text::kOtherMode},
        {kEmphasisMask, trace_text::kOtherEmphasis},
        {kLayerMask, trace_text::kOtherLayer},
        {kCopyrightMask, trace_text::kOtherCopyright},
        {kOriginalMask, trace_text::kOtherOriginal},
    }};
    const auto* const broken = std::find_if(
        kRules.begin(), kRules.end(), [&](const Rule& rule) { return ((a ^ b) & rule.mask) != 0; });
    return broken->text;
}

}  // namespace

void trace_broken_rule(std::uint32_t bits, const Trace& trace) {
    if (!trace) {
        return;
    }
    FrameHeaderRecord record;
    for (std::size_t index = 0; index < kHeaderBytes; ++index) {
        record.HeaderBytes[index] = static_cast<std::uint8_t>(bits >> (24 - 8 * index));
    }
    DecodeFrameHeader(record, nullptr, trace);
}

void trace_rejected(std::uint32_t first, std::uint32_t bits, const Trace& trace) {
    if (!trace) {
        return;
    }
    if (!parse_frame_header(bits)) {
        trace_broken_rule(bits, trace);
    } else if (headers_agree(first, bits)) {
        trace(trace_text::kDecodeFailed);
    } else {
        trace(disagreement(first, bits));
    }
}

}  // namespace brindle
