// The bytes of a tag, made from the frames in memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "id3v2/frame_store.h"
#include "util/file_content.h"

namespace brindle {

// A version 3 tag: header, one frame for each value in the order of the frame list, and a last
// mark of padding. The header's size is left 0 until the tag has its place.
//
// An id that contains "ID3" is not written, nor is a TXXX value after an empty one.
[[nodiscard]] std::vector<std::uint8_t> build_tag(const FrameStore& frames);

// Fits the tag into an area of that many bytes: padded with zeros, its size in its header.
void fit_tag(std::vector<std::uint8_t>& tag, std::size_t area);
// The same of a tag that need not be in memory.
[[nodiscard]] FileContent fitted_tag(const FileContent& tag, std::int64_t area);

// A tag of frames that are built already, as build_tag() makes it.
[[nodiscard]] FileContent tag_of(const FileContent& frames);

}  // namespace brindle
