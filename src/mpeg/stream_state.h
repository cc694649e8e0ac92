// What the analyser knows of a stream while it looks at a file and afterwards.
#pragma once

#include <cstdint>
#include <optional>

#include <brindle/error.h>
#include <brindle/values.h>

#include "mpeg/frame_header.h"
#include "mpeg/xing_header.h"

namespace brindle {

inline constexpr std::int32_t kDurationUnknown = -1;

struct StreamState {
    String file_name;  // "" until a scan succeeds
    std::int32_t duration_ms = kDurationUnknown;
    std::int32_t frame_counter = 0;
    FrameHeaderRecord header;  // the accepted first frame
    XingRecord xing;
    std::int32_t average_bit_rate = 0;  // kbit/s
    bool cancelled = false;
    // Offset of the accepted first frame, also when the header's own position became 0.
    std::optional<std::int32_t> accepted_position;
    // The header from which the longest run was followed. Near the end of a file few frames make a
    // run, so the first one that was kept may be a false header.
    std::uint32_t confirmed_header = 0;

    // Back to no stream. Without one the average has no meaning.
    void reset() {
        file_name.clear();
        duration_ms = kDurationUnknown;
        frame_counter = 0;
        header = {};
        cancelled = false;
        accepted_position.reset();
        confirmed_header = 0;
    }
};

}  // namespace brindle
