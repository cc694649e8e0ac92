// What a file's ID3v2 tag says: to hosts, and by the public documents.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include <brindle/cMPEGHeader.h>
#include <brindle/tag_facts.h>

namespace brindle::host {

// Hosts cannot read the tag to its end. The library puts a stamp in the place of title and artist;
// a title that merely says the same is in its frame.
[[nodiscard]] bool is_corrupt(const cMPEGHeader& header);
// That title, as title_of() has it.
[[nodiscard]] bool is_stamp(std::string_view text);

// As hosts read them. The stamp has no date and time, so that two runs say the same.
[[nodiscard]] String title_of(const cMPEGHeader& header);
[[nodiscard]] String artist_of(const cMPEGHeader& header);

// In the order of the file, each once.
[[nodiscard]] std::vector<String> tag_frame_ids(const cMPEGHeader& header);
[[nodiscard]] bool is_picture(const String& frame_id);

// The first four characters of the recording time (TDRC), or the text of TYER.
[[nodiscard]] std::optional<String> tag_year(const TagFacts& facts);

struct TagGenre {
    String text;                         // "(17)", "(17)Refinement", "17" and "Rock" are all in use
    String code;                         // what is in parentheses, or all of the text
    std::optional<std::uint8_t> number;  // of the list of genres
};
[[nodiscard]] std::optional<TagGenre> tag_genre(const TagFacts& facts);

// The value of a frame with one text as it is shown: the year and the code of the genre as above,
// and of comments the first without a description.
[[nodiscard]] std::optional<String> tag_text(const TagFacts& facts, std::u16string_view frame_id);

}  // namespace brindle::host
