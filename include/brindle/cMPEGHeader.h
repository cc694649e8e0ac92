// What an MP3 file is and what is written in it: the public class of Brindle.
//
//     brindle::cMPEGHeader header;
//     header.FileName(u"/music/jingle.mp3");
//     std::int32_t length = header.Duration();       // milliseconds
//     header.Title(u"Morning jingle");
//     header.SaveAllInfo();
//
// Assigning FileName reads the file; properties answer from memory; assignments change memory
// only; SaveAllInfo writes them into the file and StripTags removes tags from it. The audio bytes
// of the file are never changed.
//
// Errors. Except where a member names its errors, no member raises any: before the first FileName,
// for a missing file or a value that can't be converted, a property reads as its default (0, "",
// false, Empty) and an assignment changes nothing.
//
// Threads. An object belongs to one thread at a time; different objects share nothing.
//
// Formats. Frame headers: ISO/IEC 11172-3 and 13818-3, with the common MPEG 2.5 extension. Tags:
// "ID3 tag version 2.3.0" (also 2.2 and 2.4.0 when reading) and ID3v1.1 at the end of the file.
// Frame ids such as TIT2 below are those of ID3 2.3.0. Texts of tags are 8-bit characters of the
// system's code page (Windows-1252 elsewhere); a character outside it is written as "?".
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include <brindle/error.h>
#include <brindle/export.h>
#include <brindle/keyed_collection.h>
#include <brindle/save_options.h>
#include <brindle/text.h>
#include <brindle/values.h>

namespace brindle {

class cMP3ID3v2;
struct Environment;
struct FrameWalk;
struct WalkedFrame;
struct SavePlan;
struct ComparedTag;
struct TagFacts;
struct StripPlan;

class BRINDLE_EXPORT cMPEGHeader {
public:
    cMPEGHeader();
    // Another disk and clock than the machine's own. For tests.
    explicit cMPEGHeader(Environment& environment);
    cMPEGHeader(const cMPEGHeader&) = delete;
    cMPEGHeader& operator=(const cMPEGHeader&) = delete;
    // Takes over file, unsaved edits, events and settings; `other` is as a new one then. Not while
    // an event of either runs.
    cMPEGHeader(cMPEGHeader&& other) noexcept;
    cMPEGHeader& operator=(cMPEGHeader&& other) noexcept;
    // Nothing is written: unsaved edits are lost.
    ~cMPEGHeader();

    // --- Events. Called synchronously, from inside the member that causes them. An empty one is
    // --- never called. While Reading, Scanning, OnYield or OnMessageBox runs, an assignment of
    // --- FileName to the same object is ignored, StripTags returns false and SaveAllInfo raises
    // --- error 5. A handler may clear or replace itself while it runs. What a handler of Reading,
    // --- Scanning or DurationNeeded throws ends the handler alone: the member goes on.

    // A file is about to be read: its name. Also for names that are then not opened.
    std::function<void(const String& FileName)> Reading;
    // Progress while all frames of a file are walked, about twice a second: 0-based position and
    // length in bytes. Where a second pass is needed, which goes through the file from its end,
    // FilePos is the share of the file that is done: it counts up from the start again. Cancel set
    // to true ends the walk; the file then has no stream.
    std::function<void(const String& FileName, std::int32_t FilePos, std::int32_t FileLength,
                       bool& Cancel)>
        Scanning;
    // Duration was asked for and is not known. What the handler stores (milliseconds) is the
    // answer to that one question. A handler may read Duration of the same object; inside 16
    // handlers that do, it reads 0.
    std::function<void(std::int32_t& DurationinmS)> DurationNeeded;

    // --- Hooks of the program around it.

    // Long scans and copies call it now and then, so that a user interface stays alive.
    std::function<void()> OnYield;
    // A text that the user has to acknowledge.
    std::function<void(const String& Text)> OnMessageBox;

    // --- The object's own state.

    // True after any assignment of FileName. A mark for hosts.
    [[nodiscard]] bool g_InUse() const;
    void g_InUse(bool value);
    // A place for the host's preferred style. Default NoFractions; nothing here reads it.
    [[nodiscard]] eTimeDisplayStyle TimeStyle() const;
    void TimeStyle(eTimeDisplayStyle value);
    // False (the default): Title, Artist and Year also set the ID3v1 field of that name.
    [[nodiscard]] bool Writev1v2Separate() const;
    void Writev1v2Separate(bool value);

    // --- The file.

    // Drops the file at hand with its unsaved edits and reads the one named. Only names whose last
    // three characters are mp3 or mp2, in any case, are opened; for any other, and for a file that
    // does not exist, the object is empty and FileName reads "". Raises no error.
    void FileName(const String& NewFileName);
    [[nodiscard]] String FileName() const;
    // Writes the ID3v1 record (appended when the file has none) and the ID3v2 tag as version 2.3,
    // and waits until both are on the device. A tag that fits into the old one's space is written
    // in place; otherwise a new file takes the old one's place in one step. Of a version 2.2 tag
    // only artist, title, year, category level and category go on, with the values set for them;
    // what else was set is lost.
    // An error leaves the file as it was, with two exceptions for a tag that is written in place:
    // 57 "written, but perhaps not on the device", and an error whose text says that what was
    // overwritten could not be restored.
    // Errors: -896556 "FileName is Not set" before the first FileName; 0x80041001 for an empty
    // file; 5 inside an event of this object, and for a version 2.2 tag that claims more than the
    // file holds when no audio tells where it ends; 6 for a file that is or would get longer than
    // 2,147,483,647 bytes; 7 when memory ran out, also while the file was read; 62 when another
    // program has cut the file; 70 also when another program has changed it meanwhile; errors of
    // opening, writing and renaming (53, 57, 61, 67, 70, 75, 76). The source is BrindleId3v1Tagger
    // for opening and for the record, BrindleID3v2Tagger for all else. An empty object saves
    // nothing and succeeds, and so does one whose file is gone.
    void SaveAllInfo();
    // Removes the tags named (1 ID3v1, 2 ID3v2, 3 both) from the file in one step and reads it
    // again; true when that went well, also when there was none. On false the file is as it was.
    bool StripTags(eTagType eTagTypes);

    // --- The stream, as of the last FileName.

    // "Stereo", "Joint Stereo" or "Mono" (also for dual channel); "" without a stream.
    [[nodiscard]] String MonoStereo() const;
    // Constant rate: bit/s (128000). Variable rate (VBR): the average in kbit/s (192).
    [[nodiscard]] std::int32_t BitRate() const;
    // True when a XING header or frames of different rates say so.
    [[nodiscard]] bool VBR() const;
    // "1", "2" or "3"; "0" without a stream. Error 91 before the first FileName.
    [[nodiscard]] String Layer() const;
    // Play length in milliseconds. Unknown with a file open: raises DurationNeeded each time and
    // returns its answer, 0 without one.
    [[nodiscard]] std::int32_t Duration() const;
    // Sampling frequency in Hz.
    [[nodiscard]] std::int32_t Frequency() const;
    // True when audio does not begin exactly where the tag ends (at byte 0 without a tag).
    [[nodiscard]] bool RepairRequired() const;

    // --- The tags.

    // Which tags the file has; -1, not NoTags, for a file with neither.
    [[nodiscard]] eTagType TagType() const;
    // Number of different frame ids in the ID3v2 tag (low 16 bits).
    [[nodiscard]] std::int16_t FrameCount() const;
    // Bytes of the ID3v2 tag with its 10-byte header; 0 without one.
    [[nodiscard]] std::int32_t ID3TagSizeIncludingHeader() const;
    // The ids of the frames in the order of the file. The collection itself, not a copy: it stays
    // valid after the object has gone on to another file. Null before the first FileName.
    [[nodiscard]] std::shared_ptr<KeyedCollection> v2Frames() const;
    // The value of a frame by its id and its number among those of the same id, from 1. One
    // character for each byte, the leading encoding byte left out (pictures are whole).
    [[nodiscard]] String v2Tag(const String& sFrame, std::int32_t indexInFrame) const;

    // --- Descriptive fields of the ID3v2 tag.

    // TIT2. The assignment also sets Titlev1Tag unless Writev1v2Separate.
    [[nodiscard]] String Title() const;
    void Title(const String& value);
    // Sets TIT2 alone, never Titlev1Tag.
    void Song(const String& value);
    // TPE1. The assignment also sets artistv1Tag unless Writev1v2Separate.
    [[nodiscard]] String Artist() const;
    void Artist(const String& value);
    // TALB.
    [[nodiscard]] String Album() const;
    void Album(const String& value);
    // TYER. Text that is not a number reads 0. The assignment also sets Yearv1Tag unless
    // Writev1v2Separate.
    [[nodiscard]] std::int16_t Year() const;
    void Year(std::int16_t value);
    // TRCK. Text that is not a number, such as 3/12, reads 0.
    [[nodiscard]] std::int16_t Track() const;
    void Track(std::int16_t value);
    // TCON: the genre's number as text, "0" to "255". Other text is not assigned.
    [[nodiscard]] String Genre() const;
    void Genre(const String& value);
    // COMM. As read from a file it begins with the comment's language and description.
    [[nodiscard]] String Comments() const;
    void Comments(const String& value);
    // TCOM.
    [[nodiscard]] String Composer() const;
    void Composer(const String& value);
    // TPUB.
    [[nodiscard]] String Publisher() const;
    void Publisher(const String& value);
    // TCOP.
    [[nodiscard]] String CopyRight() const;
    void CopyRight(const String& value);
    // WOAR; two names for one field.
    [[nodiscard]] String URL() const;
    void URL(const String& value);
    [[nodiscard]] String ArtistUrl() const;
    void ArtistUrl(const String& value);

    // --- Scheduling fields, each kept in a TXXX frame of the name in quotes.

    // "TarnSpeed": playing speed.
    [[nodiscard]] double Speed() const;
    void Speed(double value);
    // "Volume".
    [[nodiscard]] std::int32_t Volume() const;
    void Volume(std::int32_t value);
    // "Opener": -1 when set, 0 when not; any value but 0 sets it.
    [[nodiscard]] std::int32_t Opener() const;
    void Opener(std::int32_t value);
    // "Cue In": milliseconds from the start of the audio.
    [[nodiscard]] std::int32_t CueInmSStart() const;
    void CueInmSStart(std::int32_t value);
    // "Sec Tone": milliseconds.
    [[nodiscard]] std::int32_t Sectone() const;
    void Sectone(std::int32_t value);
    // "Intro": milliseconds.
    [[nodiscard]] std::int32_t Intro() const;
    void Intro(std::int32_t value);
    // "OutromSStart": milliseconds from the start of the audio.
    [[nodiscard]] std::int32_t OutromsStart() const;
    void OutromsStart(std::int32_t value);
    // "CatLevel": a whole number of 16 bits as text, "0" when absent. Other text is not assigned.
    [[nodiscard]] String CategoryLevel() const;
    void CategoryLevel(const String& value);
    // "Category". Empty when absent; any value is stored as its text.
    [[nodiscard]] Variant Category() const;
    void Category(const Variant& value);
    // "End": how the item ends.
    [[nodiscard]] String Endstyle() const;
    void Endstyle(const String& value);
    // "NoFade".
    [[nodiscard]] std::int16_t NoFade() const;
    void NoFade(std::int16_t value);
    // "Agency".
    [[nodiscard]] String Agency() const;
    void Agency(const String& value);
    // "Account Exec".
    [[nodiscard]] String AccountExec() const;
    void AccountExec(const String& value);
    // "Copy".
    [[nodiscard]] String Copy() const;
    void Copy(const String& value);

    // --- Custom fields: TXXX frames under names of the host's own, compared exactly.

    // Adds a field or replaces its value; the value is stored as its text.
    void CustomFieldAdd(const String& FieldDescriptor, const Variant& FieldValue);
    [[nodiscard]] bool CustomFieldExists(const String& FieldDescriptor) const;
    // The field's text; "" when absent, Empty before the first FileName.
    [[nodiscard]] Variant CustomFieldRetrieve(const String& FieldDescriptor) const;

    // --- The ID3v1 record. Written cut or padded to 30, 30, 4 and 28 bytes.

    [[nodiscard]] String Titlev1Tag() const;
    void Titlev1Tag(const String& value);
    [[nodiscard]] String artistv1Tag() const;
    void artistv1Tag(const String& value);
    // Text that is not a number reads 0.
    [[nodiscard]] std::int16_t Yearv1Tag() const;
    void Yearv1Tag(std::int16_t value);
    [[nodiscard]] String Commentv1() const;
    void Commentv1(const String& value);

    // --- Service members.

    // Milliseconds as minutes, seconds and a two-digit fraction, for people to read. The fraction
    // is the first two digits of the remaining milliseconds (5 ms show as 05). UsePadding is
    // accepted for compatibility: the parts are always padded. "" for an unknown style.
    [[nodiscard]] String ElapsedTimeFromMs(std::int32_t ms,
                                           eTimeDisplayStyle TimeStyle = NoFractions,
                                           bool UsePadding = false) const;
    // Raises Scanning. Hosts never need it.
    void RaiseScanningEvent(const String& FileName, std::int32_t FilePos, std::int32_t FileLength,
                            bool& Cancel) const;
    // Does nothing.
    void Test();

    // --- For C++ hosts only; the automation interface has no such members.

    // "1", "2" or "25" (MPEG 2.5); "0" without a stream, "" before the first FileName.
    [[nodiscard]] String MpegVersion() const;
    // How many values v2Tag has for a frame id.
    [[nodiscard]] std::int32_t TagsInFrame(const String& sFrame) const;
    // SaveAllInfo with a choice of how the file is written. Errors: those of SaveAllInfo.
    void SaveAllInfo(const SaveOptions& options);
    // StripTags that tells what kept the tags on the file, which is then as it was. Errors: those
    // of SaveAllInfo, 62 for a file shorter than an ID3v1 record, and 5 also for a tag that claims
    // more than the file holds when no audio tells where it ends.
    void RemoveTags(eTagType eTagTypes, const SaveOptions& options = {});
    // Why the last assignment of FileName gave no file, or one that could not be read whole; none
    // when all went well. 5 for a name that does not end in mp3 or mp2, 53 for a file that does not
    // exist, else the system's error or 7.
    [[nodiscard]] std::optional<Error> OpeningError() const;
    // All custom fields, each name once, in the order of their frames.
    [[nodiscard]] std::vector<CustomField> CustomFields() const;
    // Takes a custom field out of the tag, all frames of that name. Nothing happens when there is
    // none, and for an empty name.
    void CustomFieldRemove(const String& FieldDescriptor);

    // --- The same members with UTF-8 text. A file name may hold any bytes (from_utf8).

    void FileName(std::string_view utf8) { FileName(from_utf8(utf8)); }
    void Title(std::string_view utf8) { Title(from_utf8(utf8)); }
    void Song(std::string_view utf8) { Song(from_utf8(utf8)); }
    void Artist(std::string_view utf8) { Artist(from_utf8(utf8)); }
    void Album(std::string_view utf8) { Album(from_utf8(utf8)); }
    void Genre(std::string_view utf8) { Genre(from_utf8(utf8)); }
    void Comments(std::string_view utf8) { Comments(from_utf8(utf8)); }
    void Composer(std::string_view utf8) { Composer(from_utf8(utf8)); }
    void Publisher(std::string_view utf8) { Publisher(from_utf8(utf8)); }
    void CopyRight(std::string_view utf8) { CopyRight(from_utf8(utf8)); }
    void URL(std::string_view utf8) { URL(from_utf8(utf8)); }
    void ArtistUrl(std::string_view utf8) { ArtistUrl(from_utf8(utf8)); }
    void CategoryLevel(std::string_view utf8) { CategoryLevel(from_utf8(utf8)); }
    void Category(std::string_view utf8) { Category(Variant(from_utf8(utf8))); }
    void Endstyle(std::string_view utf8) { Endstyle(from_utf8(utf8)); }
    void Agency(std::string_view utf8) { Agency(from_utf8(utf8)); }
    void AccountExec(std::string_view utf8) { AccountExec(from_utf8(utf8)); }
    void Copy(std::string_view utf8) { Copy(from_utf8(utf8)); }
    void Titlev1Tag(std::string_view utf8) { Titlev1Tag(from_utf8(utf8)); }
    void artistv1Tag(std::string_view utf8) { artistv1Tag(from_utf8(utf8)); }
    void Commentv1(std::string_view utf8) { Commentv1(from_utf8(utf8)); }
    [[nodiscard]] String v2Tag(std::string_view id, std::int32_t indexInFrame) const {
        return v2Tag(from_utf8(id), indexInFrame);
    }
    [[nodiscard]] std::int32_t TagsInFrame(std::string_view id) const {
        return TagsInFrame(from_utf8(id));
    }
    void CustomFieldAdd(std::string_view name, std::string_view value) {
        CustomFieldAdd(from_utf8(name), Variant(from_utf8(value)));
    }
    void CustomFieldAdd(std::string_view name, const Variant& value) {
        CustomFieldAdd(from_utf8(name), value);
    }
    [[nodiscard]] bool CustomFieldExists(std::string_view name) const {
        return CustomFieldExists(from_utf8(name));
    }
    [[nodiscard]] Variant CustomFieldRetrieve(std::string_view name) const {
        return CustomFieldRetrieve(from_utf8(name));
    }
    void CustomFieldRemove(std::string_view name) { CustomFieldRemove(from_utf8(name)); }

private:
    class HostLink;
    class ReentrancyGuard;
    cMP3ID3v2& model_to_change(const ReentrancyGuard& mark);
    void take(cMPEGHeader& other) noexcept;
    friend SavePlan plan_save(const cMPEGHeader& header);  // <brindle/save_plan.h>
    friend StripPlan plan_strip(const cMPEGHeader& header, eTagType eTagTypes);
    friend class TagEdit;                                       // <brindle/tag_edit.h>
    friend TagFacts read_tag_facts(const cMPEGHeader& header);  // <brindle/tag_facts.h>
    friend ComparedTag compare_tag(const cMPEGHeader& header);
    friend FrameWalk walk_frames(const cMPEGHeader& header);  // <brindle/frame_walk.h>
    friend FrameWalk walk_frames(const cMPEGHeader& header,
                                 const std::function<void(const WalkedFrame& frame)>& visit);

    Environment* environment_;  // never null
    // Made with the first model.
    std::unique_ptr<HostLink> host_;
    std::unique_ptr<cMP3ID3v2> model_;
    std::optional<Error> refusal_;  // of the name that was assigned last
    bool in_use_ = false;
    bool separate_ = false;
    bool in_loop_ = false;
    mutable int running_duration_handlers_ = 0;
    eTimeDisplayStyle time_style_ = NoFractions;
};

}  // namespace brindle
