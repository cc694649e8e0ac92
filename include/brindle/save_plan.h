// What SaveAllInfo would do to a file, before it does it: how many bytes the new tag needs, whether
// they fit into the old tag's place, and what of the old tag would be gone afterwards.
//
//     brindle::SavePlan plan = brindle::plan_save(header);
//     if (!plan.losses.empty()) { ... ask before header.SaveAllInfo() ... }
//
// SaveAllInfo writes the frames that FileName has read and the host has set. What it has not read
// it can't write: a text of more than 5,000 bytes, a picture of more than 81,920, whatever stands
// after a place where the reading lost its way. Other programs do see such frames. So the file's
// tag is gone through a second time here, by the public documents "ID3 tag version 2" (2.2), "ID3
// tag version 2.3.0" and "ID3 tag version 2.4.0": with the frame sizes of 7 bits a byte of version
// 4 (and the plain ones of the tags that only make sense so), unsynchronisation, extended headers,
// the bytes that frame flags put in front of a body, and tags one directly after the other. A frame
// that this second reading finds is
//
// - kept when its body stands unchanged in the new tag;
// - nobody's loss when the host has replaced or removed it since FileName: a value set under the
//   same id (for TXXX under the same name) takes the place of all that it replaces, and so does
//   the stamp "TAGGED BY" of every save;
// - changed when the frame is there, but with another body: the same text in another form
//   (UTF-16 as 8-bit text, a comment whose separators are gone, a link with an encoding byte in
//   front), or with other content (characters outside the code page, the NULs and the first field
//   of binary frames such as PRIV or GEOB);
// - lost otherwise. So is a frame that is there under its id, but was taken over in a form that its
//   new flags deny: compressed, encrypted, unsynchronised, or with a wrong size, unless its text is
//   still the same.
//
// <brindle/tag_edit.h> writes a tag in another way, which keeps what it was not told to change.
//
// Frames without a body are none. A frame that claims more bytes than its tag holds has the bytes
// that are there. Tags elsewhere than at the start of the file, where the library finds one, and
// directly after those are audio or stay where they are, and do not count.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include <brindle/error.h>
#include <brindle/export.h>
#include <brindle/new_content.h>
#include <brindle/values.h>

namespace brindle {

class cMPEGHeader;

enum class LossReason {
    TooLarge,      // over the size that is read of such a frame
    AfterCorrupt,  // the reading ended at a frame before it that can't be right
    NotReached,    // the reading never came to it, or took it for part of another frame
    Misread,       // compressed, encrypted, unsynchronised, or of another size than was read
    Version2,      // the tag is of version 2; of those only artist, title and year go on
    NotWritten,    // read, but left out when the tag is written: TXXX after an empty one
};

// A frame of the file's tag. Ids are those of its version: TT2 in version 2, TIT2 in later ones.
struct TagFrame {
    String id;
    std::int32_t number = 0;  // among those of the same id, from 1
    std::int64_t size = 0;    // bytes of its body in the file
    String name;              // of user-defined text (TXXX, TXX): its description
};

struct LostFrame : TagFrame {
    LossReason reason = LossReason::NotReached;
};

struct ChangedFrame : TagFrame {
    bool same_text = false;  // only the form is another one
};

struct SavePlan {
    std::int32_t tag_version = 0;    // of the old tag: 2, 3 or 4; 0 without one
    std::int64_t needed_length = 0;  // of the new tag without padding; 0: nothing would be written
    std::int64_t tag_area = 0;       // bytes that the old tag's space has; 0 without one
    bool fits = false;               // the new tag is written in place, else the file is rebuilt
    // Hosts find a stream in the file now and would find none afterwards: they look at 16,384
    // positions after the tag, and at those from the start of the file on where the tag is more
    // than half of it.
    bool loses_stream = false;
    // What SaveAllInfo would raise before it writes, though the file can be read: 5 for a version 2
    // tag that has no end, 6 for a file that is or would get too long, 0x80041001 for an empty one.
    // What depends on it is then not known.
    std::optional<Error> refusal;
    std::vector<LostFrame> losses;      // in the order of the file
    std::vector<ChangedFrame> changes;  // too
};

// Reads the file, in time linear in its tags; changes neither it nor `header`. Without a file open
// there is nothing to plan.
//
// A tag of version 2 is always rebuilt. Its plan is that of this one SaveAllInfo, which drops
// whatever the host has set besides artist, title, year and category: hosts save once, assign
// FileName again, and set the rest then.
//
// Errors: those of opening and reading (7, 57, 70, 75).
[[nodiscard]] BRINDLE_EXPORT SavePlan plan_save(const cMPEGHeader& header);

// What StripTags would take off.
struct StripPlan {
    std::int64_t tag_bytes = 0;     // in front of the audio: the tag, and junk around it
    std::int64_t record_bytes = 0;  // at the end: 128 or 0
    bool loses_stream = false;      // as in SavePlan
    NewContent content;             // the file as it would be
    // What RemoveTags would raise before it writes: 5, 6 or 62.
    std::optional<Error> refusal;
};

// Reads the file; changes neither it nor `header`. Without a file open there is nothing to plan.
//
// Errors: those of opening and reading (7, 57, 70, 75).
[[nodiscard]] BRINDLE_EXPORT StripPlan plan_strip(const cMPEGHeader& header, eTagType eTagTypes);

}  // namespace brindle
