// The tag and the file as they are, beside what hosts read of them.
#pragma once

#include <string>

#include <brindle/cMPEGHeader.h>
#include <brindle/tag_facts.h>

#include "output/file_facts.h"
#include "output/json_values.h"

namespace brindle::host {

// What the forms of the objects below are known by.
inline constexpr int kJsonSchema = 2;

// "tag": texts by the public documents, "custom" and "pictures". null without a tag.
[[nodiscard]] Json tag_object(const TagFacts& facts);

// "file_facts": size, time and tags of the file, and the bit rate in bit/s.
[[nodiscard]] Json file_object(const std::string& name, std::int64_t size,
                               const cMPEGHeader& header, const TagFacts& facts);

// All of a file, as one object: what hosts read under the names of the interface, then "schema",
// "tag" and "file_facts".
[[nodiscard]] Json whole_file(const std::string& name, std::int64_t size, const cMPEGHeader& header,
                              FrameValues values);

}  // namespace brindle::host
