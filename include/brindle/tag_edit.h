// A tag editor beside SaveAllInfo: it writes what the host has set, and every other frame of the
// tag byte for byte as it stands.
//
//     header.FileName(u"song.mp3");
//     header.Title(u"Another title");
//     brindle::TagEdit edit(header);
//     if (edit.plan().losses() == 0) {
//         edit.save();
//     }
//
// SaveAllInfo writes all frames anew, in the form that hosts of this library have always read; what
// it has not read is gone, and what it has misread is written so. This editor takes the frames that
// the public documents describe ("ID3 tag version 2" (2.2), "ID3 tag version 2.3.0" and "ID3 tag
// version 2.4.0") and writes a tag of version 2.3 without flags, extended header, CRC and footer:
//
// - A field that was set since FileName takes the place of every frame of its id, of user-defined
//   text (TXXX) of every frame of its name, and of the comments (COMM) and lyrics (USLT) without a
//   description. A year takes the place of the recording time (TDRC) of version 2.4, too. What has
//   no place yet follows the last frame that hosts can step over. A link (WOAR and its like) has no
//   encoding byte; all else has the form that SaveAllInfo gives it.
// - Frames that hosts cannot step over, those of more than 5,000 bytes and pictures (APIC) of more
//   than 81,920, go last: then hosts read all the others. As long as there is such a frame they
//   read "Corrupt ID3v2 Tag" as title and artist.
// - Frames of version 2.4 get the flags of 2.3, and texts in UTF-8 or big-endian UTF-16 become
//   UTF-16 with a byte order mark. Of the recording time (TDRC) year, date and time (TYER, TDAT,
//   TIME) are made where there are none. Frames of version 2.2 get the ids of 2.3.
// - The frames of a second tag directly after the first join it.
// - A field that is to be removed goes with all frames that a value for it would take the place of.
//   Where there are none, and nothing else was set, the tag stays as it is.
// - On demand (EditOptions::common_form) texts get the form that hosts and other programs read
// alike.
// - On demand pictures and texts are replaced by others (new_image, new_text), and tags of other
//   programs go (left_out_from).
// - The ID3v1 record is written only where the host has set one of its fields.
// - Where nothing but the record was set, the tag stays as it is.
//
// A result that equals the file is not written.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include <brindle/error.h>
#include <brindle/export.h>
#include <brindle/new_content.h>
#include <brindle/save_options.h>
#include <brindle/save_plan.h>
#include <brindle/tag_facts.h>
#include <brindle/values.h>

namespace brindle {

class cMPEGHeader;

enum class FrameFate {
    Kept,       // byte for byte as it stands
    Moved,      // the same, but after the frames that hosts can step over
    Converted,  // in another form; the same value
    Changed,    // replaced by a value that was set, or by one of EditOptions' functions
    Lost,       // see EditLoss
    Removed,    // as EditOptions asks
};

// What the documents' own rules make unreadable.
enum class EditLoss {
    CutByTagEnd,    // the tag ends before the frame does
    NoFrame,        // bytes of the tag that are neither a frame nor padding
    UnknownId,      // of version 2.2, and later versions have no such frame
    UnknownLength,  // compressed, without the length that version 2.3 wants
};

// A frame of the old tag. Bytes that are no frame have no id.
struct EditedFrame : TagFrame {
    FrameFate fate = FrameFate::Kept;
    std::optional<EditLoss> loss;  // of a lost one
};

struct EditPlan {
    std::int32_t tag_version = 0;    // of the old tag: 2, 3 or 4; 0 without one
    std::int64_t needed_length = 0;  // of the new tag without padding; 0: the tag is not written
    std::int64_t tag_area = 0;       // bytes that the old tag's space has; 0 without one
    bool fits = false;               // the new tag is written in place, else the file is rebuilt
    bool changes_nothing = false;    // the file is as it would be made already
    bool loses_stream = false;       // as in SavePlan
    // What save() would raise before it writes: 5, 6, 62 or 0x80041001. What depends on it is then
    // not known.
    std::optional<Error> refusal;
    std::vector<EditedFrame> frames;  // of the old tag, in the order of the file
    // Frames besides the first one that a value has replaced.
    std::vector<TagFrame> duplicates;
    // User-defined texts whose name differs from one that was set only in upper and lower case.
    std::vector<TagFrame> other_cases;
    // Frames of the new tag, or with common_form of one that stays, that hosts cannot step over.
    std::vector<TagFrame> oversized;
    // Scheduling fields that stay in UTF-16 or UTF-8, in which hosts do not find them.
    std::vector<TagFrame> unseen;
    // Of EditOptions::common_form: texts of several values, which become one with "/" between them;
    std::vector<TagFrame> joined;
    // and what stays as it is, since hosts and other programs read no form of it alike: texts with
    // a character that the code page has not, or not at its place in ISO-8859-1, and links.
    std::vector<TagFrame> without_common_form;
    // Of EditOptions::new_image and new_text: frames that have other content.
    std::vector<TagFrame> rewritten;

    [[nodiscard]] BRINDLE_EXPORT std::vector<EditedFrame> losses() const;
};

// A field of the tag: the id of its frame in version 2.3, and of user-defined text (TXXX) its name.
struct FieldName {
    String id;
    String custom_name = {};
};

// A picture (APIC) that stays in the tag.
struct EditedPicture : TagFrame {
    String mime_type;
    std::vector<std::uint8_t> image;
    // Bytes of the new frame's body besides the image and its MIME type.
    std::size_t other_bytes = 0;
};

struct NewImage {
    String mime_type;  // of ISO-8859-1
    std::vector<std::uint8_t> bytes;
};

struct EditOptions {
    // Values that the code page of hosts does not hold are written as UTF-16, which other programs
    // read; otherwise each such character is written as "?".
    bool unicode = false;
    // Fields to take out of the tag. One that was set as well is written.
    std::vector<FieldName> removed = {};
    // Also where nothing was set: the tag becomes one of version 2.3 whose texts (all "T" frames,
    // COMM, USLT, USER, the description of WXXX, IPLS) are in ISO-8859-1 as far as the code page
    // has their characters at the same places, several values of one joined with "/". Of version
    // 2.4 the original release time (TDOR) gives TORY, the lists of people (TIPL, TMCL) become
    // IPLS, and genres by number get their parentheses. A comment without a description loses its
    // language, which hosts would read as part of it. A tag that has this form stays as it is.
    bool common_form = false;
    // With `unicode`: so are values with a character that ISO-8859-1 has not at the place where the
    // code page has it, such as a quotation mark or the euro sign. Other programs read these right;
    // hosts do not read them.
    bool latin1 = false;
    // Is called once for each picture that stays, except compressed and encrypted ones, those
    // without an image and those of more than 64 MiB. An image that it returns takes the place of
    // the picture's; type and description stay.
    std::function<std::optional<NewImage>(const EditedPicture&)> new_image = nullptr;
    // Is called once for each value of the texts that stay ("T" frames, COMM, USLT, USER, IPLS). A
    // text that it returns takes the value's place, in ISO-8859-1 or UTF-16.
    std::function<std::optional<String>(const TagFrame&, const String& value)> new_text = nullptr;
    // Bytes of the file, by their 0-based offsets, that are left out: tags of other programs
    // between the audio and the ID3v1 record. The file is rebuilt then.
    std::int64_t left_out_from = 0;
    std::int64_t left_out_to = 0;
};

// One edit of the file that is open in a header. The header must live as long; what is set in it
// later does not count, and it does not learn of the save: assign FileName again.
class BRINDLE_EXPORT TagEdit {
public:
    // Works the edit out; reads the file and changes neither it nor `header`.
    // Errors: 5 for bytes to leave out that the file does not have; -896556 without a file open;
    // those of opening and reading (7, 53, 57, 70, 75).
    explicit TagEdit(const cMPEGHeader& header, const EditOptions& options = {});
    TagEdit(const TagEdit&) = delete;
    TagEdit& operator=(const TagEdit&) = delete;
    TagEdit(TagEdit&& other) noexcept;
    TagEdit& operator=(TagEdit&& other) noexcept;
    ~TagEdit();

    [[nodiscard]] const EditPlan& plan() const;
    // Makes `preview` answer what hosts will read after the save. Its FileName is that of the file,
    // and nothing may be saved by it.
    void preview(cMPEGHeader& preview) const;
    // What other programs will read then.
    [[nodiscard]] TagFacts facts() const;
    // What save() will make of the file. Reads the file, and holds the new tag in memory.
    // Errors: those of reading (7, 57, 62).
    [[nodiscard]] NewContent content() const;
    // Writes the file, also when frames are lost by it. Once only.
    // Errors: plan().refusal; those of SaveAllInfo.
    void save(const SaveOptions& options = {});

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace brindle
