// What an edit does to the frames of a tag, in words.
#pragma once

#include <string>
#include <vector>

#include <brindle/tag_edit.h>

namespace brindle::host {

// `12 bytes`, of a lost frame with the reason.
[[nodiscard]] std::string remark_on(const EditedFrame& frame);
// `Would be moved`
[[nodiscard]] std::string fate_text(FrameFate fate);

// All of them on one line.
[[nodiscard]] std::string losses_text(const std::vector<EditedFrame>& frames);

// What the user should know of the tag besides, a sentence each.
[[nodiscard]] std::vector<std::string> remarks_on(const EditPlan& plan);

}  // namespace brindle::host
