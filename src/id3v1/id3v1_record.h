// The 128 bytes that may be at the very end of an MP3 file.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace brindle {

inline constexpr std::size_t kId3v1Length = 128;

struct Id3v1Field {
    std::size_t offset;
    std::size_t width;
};

// clang-format off
inline constexpr Id3v1Field kId3v1Identifier{  0,  3};
inline constexpr Id3v1Field kId3v1Title     {  3, 30};
inline constexpr Id3v1Field kId3v1Artist    { 33, 30};
inline constexpr Id3v1Field kId3v1Album     { 63, 30};
inline constexpr Id3v1Field kId3v1Year      { 93,  4};
inline constexpr Id3v1Field kId3v1Comment   { 97, 28};
inline constexpr Id3v1Field kId3v1Zero      {125,  1};  // parts the comment from the track
inline constexpr Id3v1Field kId3v1Track     {126,  1};
inline constexpr Id3v1Field kId3v1Genre     {127,  1};
// clang-format on

inline constexpr std::uint8_t kNoGenre = 255;

// The record with a track number, whichever program wrote it: a comment of 30 characters loses its
// 29th and its 30th is taken as the track.
class Id3v1Record {
public:
    // Without texts: spaces, track 0 and no genre.
    Id3v1Record() noexcept;
    // Nothing when the bytes are not a whole record that begins with "TAG".
    [[nodiscard]] static std::optional<Id3v1Record> parse(std::span<const std::uint8_t> bytes);

    [[nodiscard]] std::span<const std::uint8_t, kId3v1Length> bytes() const noexcept {
        return bytes_;
    }

    // All bytes of a text, with its padding.
    [[nodiscard]] std::span<const std::uint8_t> text(Id3v1Field field) const noexcept;
    // Cut or padded with spaces to the field's width.
    void set_text(Id3v1Field field, std::span<const std::uint8_t> text) noexcept;

    [[nodiscard]] std::uint8_t track() const noexcept { return bytes_[kId3v1Track.offset]; }
    void set_track(std::uint8_t track) noexcept { bytes_[kId3v1Track.offset] = track; }
    [[nodiscard]] std::uint8_t genre() const noexcept { return bytes_[kId3v1Genre.offset]; }
    void set_genre(std::uint8_t genre) noexcept { bytes_[kId3v1Genre.offset] = genre; }

private:
    std::array<std::uint8_t, kId3v1Length> bytes_{};
};

// The three bytes that a record begins with. Readers take upper case only.
[[nodiscard]] bool is_id3v1_identifier(std::span<const std::uint8_t> bytes) noexcept;
// The lower-case form that some old taggers wrote and that only the stripper knows.
[[nodiscard]] bool is_lower_case_id3v1_identifier(std::span<const std::uint8_t> bytes) noexcept;

}  // namespace brindle
