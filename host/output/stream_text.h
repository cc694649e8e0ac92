// What kind of stream and tags a file has, in words.
#pragma once

#include <cstdint>
#include <string>

#include <brindle/cMPEGHeader.h>

namespace brindle::host {

[[nodiscard]] bool has_stream(const cMPEGHeader& header);
// `MPEG 1 Layer 3`
[[nodiscard]] std::string format_text(const cMPEGHeader& header);
// Of a variable rate the average.
[[nodiscard]] std::int32_t kilobits_per_second(const cMPEGHeader& header);
// `2:23.046`: minutes, seconds and milliseconds; of hours, too.
[[nodiscard]] std::string time_text(std::int64_t ms);
// `143046 ms`
[[nodiscard]] std::string milliseconds_text(std::int64_t ms);
[[nodiscard]] bool has_id3v1(const cMPEGHeader& header);
// As hosts see it.
[[nodiscard]] bool has_id3v2(const cMPEGHeader& header);
// `ID3v1 and ID3v2`
[[nodiscard]] std::string tag_type_text(eTagType type);

}  // namespace brindle::host
