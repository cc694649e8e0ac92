// What a save would do to a file and what it did, in words.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <brindle/cMPEGHeader.h>
#include <brindle/save_plan.h>
#include <brindle/tag_edit.h>

namespace brindle::host {

// `COMM:1`, or `TXXX:3 "Note"`
[[nodiscard]] std::string frame_label(const TagFrame& frame);
// `6000 bytes, too large to be read`
[[nodiscard]] std::string remark_on(const LostFrame& frame);
// `12 bytes, same text in another form`
[[nodiscard]] std::string remark_on(const ChangedFrame& frame);
// `12 bytes`, of a lost frame with the reason.
[[nodiscard]] std::string remark_on(const EditedFrame& frame);

// Label and remark: `COMM:1 (12 bytes, same text in another form)`
template <class Frame>
[[nodiscard]] std::string frame_text(const Frame& frame) {
    return frame_label(frame) + " (" + remark_on(frame) + ")";
}

// All of them on one line.
[[nodiscard]] std::string losses_text(const std::vector<LostFrame>& frames);

// `Would be moved`
[[nodiscard]] std::string fate_text(FrameFate fate);

// All of them on one line.
[[nodiscard]] std::string losses_text(const std::vector<EditedFrame>& frames);

// What the user should know of the tag besides, a sentence each.
[[nodiscard]] std::vector<std::string> remarks_on(const EditPlan& plan);

// Why a change is refused after which hosts would find no stream.
[[nodiscard]] std::string lost_stream_text(const std::string& way_to_force = "--force");

// A tag that is to be written: whether it fits, how many bytes it needs, and how many the old tag's
// space has, 0 without one. `Fits in place: the tag needs 96 bytes of 2040`
[[nodiscard]] std::string how_it_fits(bool fits, std::int64_t needed, std::int64_t space);
// One that was written: `written in place (96 of 2040 bytes)`, or how the file was rebuilt.
[[nodiscard]] std::string how_it_was_written(bool is_rebuilt, std::int64_t needed,
                                             std::int64_t space);

// What became of the ID3v1 record of a file that `now` has read after the save.
[[nodiscard]] std::string record_text(const cMPEGHeader& now, bool had_record);
// What is said of a tag that hosts do not see in it; "" where they do.
[[nodiscard]] std::string unseen_tag_text(const cMPEGHeader& now);

// `; a remark; another one`
[[nodiscard]] std::string remarks_text(const std::vector<std::string>& remarks);

}  // namespace brindle::host
