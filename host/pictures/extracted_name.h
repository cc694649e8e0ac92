// Names of the files beside an audio file into which its pictures go.
#pragma once

#include <cstdint>
#include <string>

namespace brindle::host {

inline constexpr std::int64_t kMaxExtracted = 99;

// NAME.cover.EXT of NAME.mp3, for the first picture; NAME.cover-2.EXT for the second.
[[nodiscard]] std::string extracted_name(const std::string& file, std::int64_t number,
                                         const std::string& extension);
// Whether both, from wherever they come, are those of such a name.
[[nodiscard]] bool is_extracted_name(std::int64_t number, const std::string& extension);

}  // namespace brindle::host
