// What a save would lose or change, in words.
#pragma once

#include <string>
#include <vector>

#include <brindle/save_plan.h>

namespace brindle::host {

// `TXXX:3 "Note" (6000 bytes, too large to be read)`
[[nodiscard]] std::string loss_text(const LostFrame& frame);
// All of them on one line.
[[nodiscard]] std::string losses_text(const std::vector<LostFrame>& frames);

// `COMM:1 (12 bytes, same text in another form)`
[[nodiscard]] std::string change_text(const ChangedFrame& frame);

}  // namespace brindle::host
