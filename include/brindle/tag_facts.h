// What the tag of a file says by the public documents "ID3 tag version 2" (2.2), "ID3 tag version
// 2.3.0" and "ID3 tag version 2.4.0", as other programs read it: encodings, unsynchronisation,
// extended headers, frame sizes of 7 bits a byte and frame flags are understood.
//
// The properties of cMPEGHeader answer what hosts of this library have always read instead.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include <brindle/export.h>
#include <brindle/values.h>

namespace brindle {

class cMPEGHeader;

// The text of a frame. Ids are those of version 2.3, also for a tag of version 2.2.
struct TagText {
    String id;
    String language;             // of comments and lyrics: three letters
    String description;          // of user-defined texts (TXXX) their name
    std::vector<String> values;  // one as a rule; version 2.4 allows several

    // The values with "/" between them.
    [[nodiscard]] BRINDLE_EXPORT String text() const;
};

// An attached picture (APIC).
struct TagPicture {
    std::uint8_t type = 0;  // 3: front cover
    String mime_type;
    String description;
    std::int64_t size = 0;  // bytes of the image
    // Where the image's own header tells (PNG, JPEG, GIF, BMP, WebP); 0 otherwise.
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::vector<std::uint8_t> first_bytes;  // of the image the first 16, which tell its format
};

struct TagFacts {
    std::int32_t version = 0;  // of the first tag: 2, 3 or 4; 0 without one
    std::int64_t tag_bytes = 0;
    // In the order of the file. Of a text at most 65,536 bytes are read.
    std::vector<TagText> texts;
    std::vector<TagPicture> pictures;

    // The first text of that id; none where there is no such frame.
    [[nodiscard]] BRINDLE_EXPORT std::optional<String> text(std::u16string_view id) const;
    // The first user-defined text of that name.
    [[nodiscard]] BRINDLE_EXPORT std::optional<String> custom(std::u16string_view name) const;
    // The first comment without a description.
    [[nodiscard]] BRINDLE_EXPORT std::optional<String> comment() const;
};

// Reads the file, in time linear in its tag; changes neither it nor `header`. Nothing without a
// file open.
//
// Errors: those of opening and reading (7, 57, 70, 75).
[[nodiscard]] BRINDLE_EXPORT TagFacts read_tag_facts(const cMPEGHeader& header);

struct ComparedTag {
    TagFacts facts;
    // v2Tag() answers every text as the tag says it, but for the NULs between its parts, and no
    // picture is too large for hosts. True without a tag. False for a tag of version 2.2, for
    // compressed and encrypted texts, and where hosts find another tag. plan_save() tells which
    // frames hosts read in another way.
    bool hosts_read_the_same = false;
};

// The same facts, compared with what FileName has read. Values that were set since then count as
// read.
//
// Errors: those of read_tag_facts().
[[nodiscard]] BRINDLE_EXPORT ComparedTag compare_tag(const cMPEGHeader& header);

}  // namespace brindle
