// What a save leaves in a file, put together by hand.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include <brindle/values.h>

#include "support/bytes.h"
#include "support/id3v1.h"
#include "support/tags.h"

namespace brindle::test {

inline constexpr const char* kStampName = "TAGGED BY";
// What every save leaves, and what a first custom field leaves until then.
inline constexpr const char* kSavedStamp = "CorvaneTagger- Revised Feb 2011";
inline constexpr const char* kFirstStamp = "CorvaneTagger - Revised Feb 2011";

// The frames of a tag followed by the stamp of a save.
inline Tag stamped(Tag tag) {
    return tag.field(kStampName, kSavedStamp);
}

// A saved tag without any frame but its stamp takes 10 + 52 + 4 bytes: header, frame, end mark.
inline constexpr std::size_t kStampOnlyTag = 66;
// The title with which a tag of title and stamp needs `needed` bytes: its frame has a header of
// ten bytes and one byte for the encoding.
inline std::string title_for(std::size_t needed) {
    return std::string(needed - kStampOnlyTag - 11, 't');
}
inline String wide(const std::string& ascii) {
    return {ascii.begin(), ascii.end()};
}

// The record that a save appends if none of its fields was set.
inline Bytes blank_record() {
    return Id3v1{.filler = ' '}.bytes();
}

// `file` with the bytes at `offset` overwritten.
inline Bytes overwritten(const Bytes& file, std::size_t offset, const Bytes& with) {
    return file.first(offset) + with + file.part(offset + with.size(), file.size());
}

}  // namespace brindle::test
