// What a save would lose or change, in words.
#pragma once

#include <string>
#include <vector>

#include <brindle/save_plan.h>

namespace brindle::host {

// `COMM:1`, or `TXXX:3 "Note"`
[[nodiscard]] std::string frame_label(const TagFrame& frame);
// `6000 bytes, too large to be read`
[[nodiscard]] std::string remark_on(const LostFrame& frame);
// `12 bytes, same text in another form`
[[nodiscard]] std::string remark_on(const ChangedFrame& frame);

// Label and remark: `COMM:1 (12 bytes, same text in another form)`
template <class Frame>
[[nodiscard]] std::string frame_text(const Frame& frame) {
    return frame_label(frame) + " (" + remark_on(frame) + ")";
}

// All of them on one line.
[[nodiscard]] std::string losses_text(const std::vector<LostFrame>& frames);

}  // namespace brindle::host
