// The model of one MP3 file: its tag, its ID3v1 record and its stream.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include <brindle/error.h>
#include <brindle/frame_walk.h>
#include <brindle/keyed_collection.h>
#include <brindle/save_options.h>
#include <brindle/save_plan.h>
#include <brindle/tag_facts.h>
#include <brindle/values.h>

#include "id3v2/file_edit.h"
#include "id3v2/file_reading.h"
#include "id3v2/standard_fields.h"
#include "mpeg/clsMPEG.h"
#include "util/environment.h"
#include "util/file_content.h"
#include "util/host.h"

namespace brindle {

class cMP3ID3v2 : public ScannedFile {
public:
    explicit cMP3ID3v2(Environment& environment = system_environment()) : reading_(environment) {}

    // Receives progress, yields and messages. Not owned; null when there is none.
    Host* Owner = nullptr;

    // --- The file. Assigning a name reads the file; a name that does not exist leaves the object
    // --- empty. A file that can't be opened raises with the source BrindleId3v1Tagger.

    void FileName(const String& NewName) { reading_.open(NewName, Owner); }
    [[nodiscard]] String FileName() const override { return reading_.name(); }
    [[nodiscard]] bool has_file() const noexcept { return reading_.has_file(); }
    // What kept the file from being opened or read whole.
    [[nodiscard]] std::optional<Error> opening_error() const { return reading_.opening_error(); }

    // --- The stream (Stereo, Hz, milliseconds, ...), as of the last FileName.

    [[nodiscard]] String MonoStereo() const;
    [[nodiscard]] std::int32_t BitRate() const { return reading_.analyser.BitRate(); }
    [[nodiscard]] std::int32_t Frequency() const { return reading_.analyser.SamplingFrequency(); }
    [[nodiscard]] std::int32_t Duration() const { return reading_.analyser.DurationmS(); }
    [[nodiscard]] String MpegLayer() const;
    [[nodiscard]] String MpegVersion() const;
    [[nodiscard]] bool IsVBR() const { return reading_.analyser.VBR(); }
    [[nodiscard]] const clsMPEG& analyser() const { return reading_.analyser; }

    // --- The ID3v1 record, in memory.

    [[nodiscard]] bool HasID3v1Tag() const { return reading_.record.HasID3v1Tag(); }
    [[nodiscard]] String Titlev1Tag() const { return reading_.record.Title(); }
    void Titlev1Tag(const String& value) { reading_.record.Title(value); }
    [[nodiscard]] String artistv1Tag() const { return reading_.record.Artist(); }
    void artistv1Tag(const String& value) { reading_.record.Artist(value); }
    [[nodiscard]] String Yearv1Tag() const { return reading_.record.Year(); }
    void Yearv1Tag(const String& value) { reading_.record.Year(value); }
    [[nodiscard]] String Commentsv1() const { return reading_.record.Comment(); }
    void Commentsv1(const String& value) { reading_.record.Comment(value); }

    // --- The ID3v2 tag as found in the file.

    [[nodiscard]] bool HasID3v2Tag() const { return reading_.tag_position >= 1; }
    [[nodiscard]] std::uint8_t ID3v2TagVersion() const { return reading_.tag_version; }
    [[nodiscard]] std::uint8_t TagVersion() const { return reading_.tag_version; }
    // Bytes of the first tag with its header; two names for one number.
    [[nodiscard]] std::int32_t Id3v2TagSize() const override { return reading_.tag_length; }
    [[nodiscard]] std::int32_t TotalId3v2TagLen() const { return reading_.tag_length; }
    // Bytes of a second tag that directly follows the first; 0 when there is none.
    [[nodiscard]] std::int32_t Junk() const { return reading_.junk_length; }

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
    [[nodiscard]] std::uint8_t Genre() const { return reading_.tag().genre(); }
    void Genre(std::uint8_t value) { reading_.tag().set_genre(value); }
    [[nodiscard]] String OtherGenreName() const { return text(StandardField::OtherGenreName); }
    void OtherGenreName(const String& value) { reading_.tag().set_genre_name(value); }
    // The name of a genre number; "" for a number without one.
    [[nodiscard]] String GenreName(std::uint8_t Genre) const;

    // --- Custom fields and the radio fields kept in them. Without a file open nothing is set.

    void AddCustomField(const String& CustomFieldName, const String& CustomFieldValue);
    // "" when the field is absent.
    [[nodiscard]] String GetCustomField(const Variant& FieldName) const;
    [[nodiscard]] bool CustomFieldExists(const String& Desc) const;
    // Each name once, in the order of the frames.
    [[nodiscard]] std::vector<CustomField> custom_fields() const;
    // All frames of that name; nothing for an empty one.
    void remove_custom(const String& name);
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
    // The same, and whether hosts read that.
    [[nodiscard]] ComparedTag compare_tag() const;
    // As FileName() would, were there a file of that content.
    void read_content(const String& name, const FileContent& content);
    // All frames of the file as it stands.
    [[nodiscard]] FrameWalk walk_frames(const FrameVisitor& visit) const;

private:
    [[nodiscard]] String text(StandardField field) const { return reading_.tag().text(field); }
    void text(StandardField field, const String& value) { reading_.tag().set(field, value); }
    void ask_for_description(const String& description) const;

    FileReading reading_;
    std::int32_t last_error_ = 0;
};

}  // namespace brindle
