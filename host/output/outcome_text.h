// What is said of a changed file besides what was changed.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <brindle/cMPEGHeader.h>

namespace brindle::host {

// Why a change is refused after which hosts would find no stream.
[[nodiscard]] std::string lost_stream_text();

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
