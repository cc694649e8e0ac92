#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <utility>

#include <brindle/values.h>

#include "id3v1/id3v1_record.h"
#include "util/environment.h"
#include "util/file_window.h"

namespace brindle {

// What a save does to the record of a file.
struct Id3v1Change {
    enum class Kind { None, Append, Overwrite };

    Kind kind = Kind::None;
    std::int64_t offset = 0;  // of the new bytes in the file
    std::array<std::uint8_t, kId3v1Length> record{};
    std::array<std::uint8_t, kId3v1Length> old_record{};

    // The new bytes, and the bytes there now: without the identifier where there is a record.
    [[nodiscard]] std::span<const std::uint8_t> bytes() const noexcept;
    [[nodiscard]] std::span<const std::uint8_t> old_bytes() const noexcept;
};

// The ID3v1 record of one file, held in memory: nothing reaches the file before Update() or
// Stripv1Tag().
class cMP3ID3v1 {
public:
    // The number of the error that writing into an empty file raises: 0x80041001.
    static constexpr std::int32_t kNotValidMp3File = -2147217407;

    explicit cMP3ID3v1(Environment& environment = system_environment());

    [[nodiscard]] String MP3File() const { return file_name_; }
    // Keeps the name and reads the record. Raises what opening the file raises; the fields are
    // then those of a file without a record.
    void MP3File(const String& NewFile);
    // As a new one.
    void forget() noexcept {
        file_name_.clear();
        reset();
    }
    // Keeps the name and reads nothing.
    void set_name(const String& name) { file_name_ = name; }
    // The same as MP3File over a file that the caller has opened already. The window does not move.
    void read(const String& name, FileWindow& window);

    // Whether the last reading found a record; writing one does not change it.
    [[nodiscard]] bool HasID3v1Tag() const noexcept { return has_tag_; }

    // Texts are handed out without spaces at their ends and without NULs, and kept as given, to be
    // cut only when they are written.
    [[nodiscard]] String Title() const { return text(title_, kId3v1Title); }
    [[nodiscard]] String Artist() const { return text(artist_, kId3v1Artist); }
    [[nodiscard]] String Album() const { return text(album_, kId3v1Album); }
    [[nodiscard]] String Year() const { return text(year_, kId3v1Year); }
    [[nodiscard]] String Comment() const { return text(comment_, kId3v1Comment); }
    void Title(String NewTitle) { title_ = std::move(NewTitle); }
    void Artist(String NewArtist) { artist_ = std::move(NewArtist); }
    void Album(String NewAlbum) { album_ = std::move(NewAlbum); }
    void Year(String NewYear) { year_ = std::move(NewYear); }
    void Comment(String NewComment) { comment_ = std::move(NewComment); }

    // Whether a text has been set since the last reading.
    [[nodiscard]] bool is_edited() const noexcept;

    [[nodiscard]] std::uint8_t Track() const noexcept { return record_.track(); }
    [[nodiscard]] std::uint8_t Genre() const noexcept { return record_.genre(); }
    void Track(std::uint8_t NewTrack) noexcept { record_.set_track(NewTrack); }
    void Genre(std::uint8_t NewGenre) noexcept { record_.set_genre(NewGenre); }
    [[nodiscard]] String GenreName(std::uint8_t Genre) const;

    // Writes the fields over the file's record, or after its end where it has none. An empty file
    // raises an error, one of up to 128 bytes is left alone. Every error names the tagger as its
    // source.
    void Update();
    // What Update() would write into a file of that length, for a caller that writes it with more.
    // Raises what Update() raises before it writes.
    [[nodiscard]] Id3v1Change plan(BinaryFile& file, std::int64_t length) const;
    // Takes the record off the file. True also when there was none; false, and an unchanged file,
    // when anything failed.
    bool Stripv1Tag();

private:
    // A text that the host has set; without it the record's own bytes count.
    using HostText = std::optional<String>;

    void reset() noexcept;
    [[nodiscard]] String text(const HostText& set, Id3v1Field field) const;
    [[nodiscard]] Id3v1Record record_to_write() const;
    void strip_record();

    Environment* environment_;  // never null
    String file_name_;
    bool has_tag_ = false;
    Id3v1Record record_;
    HostText title_;
    HostText artist_;
    HostText album_;
    HostText year_;
    HostText comment_;
};

// What a strip leaves of a file of that length: it takes off a record of either identifier. Error
// 62 for a file that is shorter than a record.
[[nodiscard]] std::int64_t length_without_id3v1_record(BinaryFile& file, std::int64_t length);

}  // namespace brindle
