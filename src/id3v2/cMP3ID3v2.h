// The model of one MP3 file: its tag, its ID3v1 record and its stream.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include <brindle/error.h>
#include <brindle/frame_walk.h>
#include <brindle/keyed_collection.h>
#include <brindle/save_options.h>
#include <brindle/save_plan.h>
#include <brindle/tag_facts.h>
#include <brindle/values.h>

#include "id3v1/cMP3ID3v1.h"
#include "id3v2/field_frame.h"
#include "id3v2/file_edit.h"
#include "id3v2/save_layout.h"
#include "id3v2/standard_fields.h"
#include "id3v2/tag_area.h"
#include "id3v2/tag_contents.h"
#include "mpeg/audio_start.h"
#include "mpeg/clsMPEG.h"
#include "util/environment.h"
#include "util/file_content.h"
#include "util/file_window.h"
#include "util/host.h"
#include "util/overwrite_file.h"

namespace brindle {

class cMP3ID3v2 : public ScannedFile {
public:
    explicit cMP3ID3v2(Environment& environment = system_environment());

    // Receives progress, yields and messages. Not owned; null when there is none.
    Host* Owner = nullptr;

    // --- The file. Assigning a name reads the file; a name that does not exist leaves the object
    // --- empty. A file that can't be opened raises with the source BrindleId3v1Tagger.

    void FileName(const String& NewName);
    [[nodiscard]] String FileName() const override { return file_name_; }
    [[nodiscard]] bool has_file() const noexcept { return !file_name_.empty(); }

    // --- The stream (Stereo, Hz, milliseconds, ...), as of the last FileName.

    [[nodiscard]] String MonoStereo() const;
    [[nodiscard]] std::int32_t BitRate() const { return analyser_.BitRate(); }
    [[nodiscard]] std::int32_t Frequency() const { return analyser_.SamplingFrequency(); }
    [[nodiscard]] std::int32_t Duration() const { return analyser_.DurationmS(); }
    [[nodiscard]] String MpegLayer() const;
    [[nodiscard]] String MpegVersion() const;
    [[nodiscard]] bool IsVBR() const { return analyser_.VBR(); }
    [[nodiscard]] const clsMPEG& analyser() const { return analyser_; }

    // --- The ID3v1 record, in memory.

    [[nodiscard]] bool HasID3v1Tag() const { return v1_.HasID3v1Tag(); }
    [[nodiscard]] String Titlev1Tag() const { return v1_.Title(); }
    void Titlev1Tag(const String& value) { v1_.Title(value); }
    [[nodiscard]] String artistv1Tag() const { return v1_.Artist(); }
    void artistv1Tag(const String& value) { v1_.Artist(value); }
    [[nodiscard]] String Yearv1Tag() const { return v1_.Year(); }
    void Yearv1Tag(const String& value) { v1_.Year(value); }
    [[nodiscard]] String Commentsv1() const { return v1_.Comment(); }
    void Commentsv1(const String& value) { v1_.Comment(value); }

    // --- The ID3v2 tag as found in the file.

    [[nodiscard]] bool HasID3v2Tag() const { return tag_position_ >= 1; }
    [[nodiscard]] std::uint8_t ID3v2TagVersion() const { return tag_version_; }
    [[nodiscard]] std::uint8_t TagVersion() const { return tag_version_; }
    // Bytes of the first tag with its header; two names for one number.
    [[nodiscard]] std::int32_t Id3v2TagSize() const override { return total_tag_length_; }
    [[nodiscard]] std::int32_t TotalId3v2TagLen() const { return total_tag_length_; }
    // Bytes of a second tag that directly follows the first; 0 when there is none.
    [[nodiscard]] std::int32_t Junk() const { return junk_length_; }

    // --- Frames and their values. Nothing reaches the file before it is written.

    [[nodiscard]] std::int32_t FrameCount() const;
    // The id at a position from 1; "" outside.
    [[nodiscard]] String Frame(std::int32_t index) const;
    [[nodiscard]] std::shared_ptr<KeyedCollection> Frames() const;
    // The number of values that an id holds.
    [[nodiscard]] std::int32_t TagsInFrame(const Variant& Frame) const;
    // A value by its id and number; "" and LastError() 455 when there is none.
    [[nodiscard]] String Tag(const String& sFrame, std::int32_t indexInFrame);
    // The number of the error that the last Tag() met; 0 when it met none.
    [[nodiscard]] std::int32_t LastError() const { return last_error_; }
    // Adds a value: at the end for an index of 0, else where RemoveFrame() left a gap.
    void AddTag(const String& sFrame, const String& sTag, std::int32_t IndexToAddInto = 0);
    // Always raises error 13 and removes nothing; hosts use RemoveFrame().
    void RemoveTag(const String& sFrame, std::int32_t tagIndex);
    // Removes all values of an id, or the value of number IndexRemoved unless that is 0. For TXXX
    // the value is chosen by its description, and IndexRemoved receives its number, 0 when there
    // is none; without a description a message is shown and all values go.
    void RemoveFrame(const Variant& Frame, const String& CustomFrameTitle,
                     std::int32_t& IndexRemoved);
    void RemoveFrame(const Variant& Frame, const String& CustomFrameTitle = {});

    // --- The frames that have a property of their own.

    [[nodiscard]] String ArtistUrl() const { return text(StandardField::ArtistUrl); }
    void ArtistUrl(const String& value) { text(StandardField::ArtistUrl, value); }
    [[nodiscard]] String BuyURL() const { return text(StandardField::BuyUrl); }
    void BuyURL(const String& value) { text(StandardField::BuyUrl, value); }
    [[nodiscard]] String AudioURL() const { return text(StandardField::AudioUrl); }
    void AudioURL(const String& value) { text(StandardField::AudioUrl, value); }
    [[nodiscard]] String CopyRight() const { return text(StandardField::CopyRight); }
    void CopyRight(const String& value) { text(StandardField::CopyRight, value); }
    [[nodiscard]] String Composer() const { return text(StandardField::Composer); }
    void Composer(const String& value) { text(StandardField::Composer, value); }
    [[nodiscard]] String OriginalArtist() const { return text(StandardField::OriginalArtist); }
    void OriginalArtist(const String& value) { text(StandardField::OriginalArtist, value); }
    [[nodiscard]] String LinkTo() const { return text(StandardField::LinkTo); }
    void LinkTo(const String& value) { text(StandardField::LinkTo, value); }
    [[nodiscard]] String PlayCounter() const { return text(StandardField::PlayCounter); }
    void PlayCounter(const String& value) { text(StandardField::PlayCounter, value); }
    [[nodiscard]] String EncodedBy() const { return text(StandardField::EncodedBy); }
    void EncodedBy(const String& value) { text(StandardField::EncodedBy, value); }
    [[nodiscard]] String Title() const { return text(StandardField::Title); }
    void Title(const String& value) { text(StandardField::Title, value); }
    [[nodiscard]] String Artist() const { return text(StandardField::Artist); }
    void Artist(const String& value) { text(StandardField::Artist, value); }
    [[nodiscard]] String Album() const { return text(StandardField::Album); }
    void Album(const String& value) { text(StandardField::Album, value); }
    [[nodiscard]] String Year() const { return text(StandardField::Year); }
    void Year(const String& value) { text(StandardField::Year, value); }
    [[nodiscard]] String Comment() const { return text(StandardField::Comment); }
    void Comment(const String& value) { text(StandardField::Comment, value); }
    [[nodiscard]] String Lyrics() const { return text(StandardField::Lyrics); }
    void Lyrics(const String& value) { text(StandardField::Lyrics, value); }
    [[nodiscard]] String Track() const { return text(StandardField::Track); }
    void Track(const String& value) { text(StandardField::Track, value); }
    [[nodiscard]] String Publisher() const { return text(StandardField::Publisher); }
    void Publisher(const String& value) { text(StandardField::Publisher, value); }

    // The two halves of the content type frame; setting one keeps the other.
    [[nodiscard]] std::uint8_t Genre() const { return contents_->genre; }
    void Genre(std::uint8_t value);
    [[nodiscard]] String OtherGenreName() const { return text(StandardField::OtherGenreName); }
    void OtherGenreName(const String& value);
    // The name of a genre number; "" for a number without one.
    [[nodiscard]] String GenreName(std::uint8_t Genre) const;

    // --- Custom fields and the radio fields kept in them. Without a file open nothing is set.

    void AddCustomField(const String& CustomFieldName, const String& CustomFieldValue);
    // "" when the field is absent.
    [[nodiscard]] String GetCustomField(const Variant& FieldName) const;
    [[nodiscard]] bool CustomFieldExists(const String& Desc) const;
    // By a name of ASCII; "" when the field is absent.
    [[nodiscard]] String custom_text(std::string_view name) const;
    void set_custom(std::string_view name, const String& value);

    // Milliseconds.
    [[nodiscard]] std::int32_t Sectonemsend() const;
    void Sectonemsend(std::int32_t NewSectonems);
    [[nodiscard]] double Speed() const;
    void Speed(double NewTarnSpeed);
    [[nodiscard]] std::int32_t Volume() const;
    void Volume(std::int32_t NewVol);
    [[nodiscard]] bool Opener() const;
    void Opener(bool NewOpenerValue);
    // Milliseconds.
    [[nodiscard]] std::int32_t CueIn() const;
    void CueIn(std::int32_t NewCueInms);
    [[nodiscard]] std::int16_t CategoryLevel() const;
    void CategoryLevel(std::int16_t NewCatLevel);

    // --- The file again.

    // Writes the ID3v1 record and the tag; without the file, nothing. Errors of opening and of the
    // record have the source BrindleId3v1Tagger, all others BrindleID3v2Tagger. Error 53 when the
    // name that was assigned last does not exist.
    void Update(const SaveOptions& options = {});
    // Takes off the ID3v1 record (1), the tag (2) or both (3) and reads the file again. False, and
    // an unchanged file, when that failed.
    bool StripTags(std::int32_t TagsToStrip);
    // The same, but raises what failed.
    void RemoveTags(std::int32_t tags, const SaveOptions& options);
    // What Update() would need and lose. Raises what Update() would raise before it writes.
    [[nodiscard]] SavePlan plan_save() const;
    // The same for StripTags().
    [[nodiscard]] StripPlan plan_strip(std::int32_t tags) const;
    // An edit of the file as it stands, with the fields that were set since FileName(). Raises what
    // Update() would raise before it writes, also where the file is missing.
    [[nodiscard]] std::unique_ptr<FileEdit> begin_edit(const EditOptions& options) const;
    // What the tag says by the public documents. Raises what reading the file raises.
    [[nodiscard]] TagFacts read_tag_facts() const;
    // As FileName() would, were there a file of that content.
    void read_content(const String& name, const FileContent& content);
    // All frames of the file as it stands.
    [[nodiscard]] FrameWalk walk_frames(const FrameVisitor& visit) const;

private:
    void initialise();
    std::unique_ptr<BinaryFile> open_existing(const String& name);
    void keep_name(const String& name);
    void read(FileWindow& file);
    void read_tags(FileWindow& file);
    void mark_corrupt();
    [[nodiscard]] String corrupt_mark() const;

    [[nodiscard]] String text(StandardField field) const { return contents_->fields.get(field); }
    void text(StandardField field, const String& value);
    void replace_frame(std::u16string_view id, const String& held);
    void replace_value(const String& id, const String& custom_name, const String& held);

    // The fields that were set, as they stand now.
    [[nodiscard]] std::vector<EditedField> edited_fields() const;
    void save(const SaveOptions& options);
    [[nodiscard]] std::unique_ptr<BinaryFile> open_for_saving() const;
    [[nodiscard]] std::unique_ptr<BinaryFile> open_to_plan() const;
    void follow_audio(BinaryFile& file, std::int64_t length);
    void find_audio_again(BinaryFile& file);
    [[nodiscard]] TagArea find_area(BinaryFile& file, FileWindow& content);
    void save_directly(const FileToChange& target, const FileContent& old_content,
                       const Id3v1Change& record);
    void save_in_area(const FileToChange& target, const SaveLayout& layout,
                      const Id3v1Change& record, FileWindow& old_content);
    void replace_with_layout(const FileToChange& target, const SaveLayout& layout,
                             std::span<const Overwrite> changes = {});
    void follow(const SaveLayout& layout);
    // A version 2 tag's successor: what is written, and what this object becomes by it.
    struct Conversion {
        SaveLayout layout;
        std::unique_ptr<cMP3ID3v2> model;
    };
    void save_converted(const FileToChange& target, const FileContent& old_content);
    [[nodiscard]] Conversion converted(const FileContent& old_content, const TagArea& area) const;
    void read_in_place_of(const cMP3ID3v2& other, FileWindow& window);
    void become(cMP3ID3v2& other) noexcept;
    // The accepted first frame of a file that somebody else may have changed.
    [[nodiscard]] std::optional<AcceptedFrame> accepted_in(FileWindow& file) const;
    // What of a version 2 tag outlives its conversion.
    struct LastingFields {
        String artist;
        String title;
        String year;
        std::int16_t category_level;
        String category;
    };
    [[nodiscard]] LastingFields lasting_fields() const;
    void restore(const LastingFields& lasting);
    // As Update() would write them; valid while this object is unchanged.
    [[nodiscard]] FrameStore frames_to_write() const;
    void plan_save(BinaryFile& file, SavePlan& plan) const;
    void strip(std::int32_t tags, const SaveOptions& options);
    void plan_strip(BinaryFile& file, std::int32_t tags, StripPlan& plan) const;
    void reload();

    Environment& environment_;
    clsMPEG analyser_;
    cMP3ID3v1 v1_;
    std::unique_ptr<TagContents> contents_;
    String file_name_;
    std::int32_t tag_position_ = 0;  // 1-based, of the version byte; below 1: no tag
    std::int32_t total_tag_length_ = 0;
    std::int32_t junk_length_ = 0;
    std::uint8_t tag_version_ = 0;
    std::int32_t last_error_ = 0;
    // What was set since FileName(), each id, and each name of user-defined text, once.
    struct SetValue {
        String id;
        String custom_name;
        String held;
    };
    std::vector<SetValue> edited_;
    // What kept the reading from being complete. Saving a tag that was read in part would lose the
    // rest of it.
    std::optional<Error> fault_;
    // Where the analyser's first frame stands now, and how long the file is that it was found in.
    std::optional<AcceptedFrame> accepted_;
    std::int64_t known_length_ = 0;
    // The name that was assigned last does not exist; the one of the file before it is kept.
    bool is_missing_ = false;
};

}  // namespace brindle
