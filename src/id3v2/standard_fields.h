// The text and link frames that have a property of their own.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

#include <brindle/values.h>

#include "id3v2/stored_text.h"

namespace brindle {

// In the order of kStandardFields.
enum class StandardField : std::size_t {
    ArtistUrl,
    BuyUrl,
    AudioUrl,
    CopyRight,
    Composer,
    OriginalArtist,
    LinkTo,
    PlayCounter,
    EncodedBy,
    Title,
    Artist,
    Album,
    Year,
    Comment,
    Lyrics,
    OtherGenreName,
    Track,
    Publisher,
};
inline constexpr std::size_t kStandardFieldCount = 18;

// Whether a reading host sees the separators that a file had inside the text.
enum class Nuls { Kept, Removed };

struct StandardFieldRow {
    StandardField field;
    std::u16string_view frame_id;
    Nuls nuls;
    // The bytes before the text in the frame: an empty description, or language, description.
    std::u16string_view held_prefix;
};

using namespace std::string_view_literals;

inline constexpr std::array<StandardFieldRow, kStandardFieldCount> kStandardFields{{
    // clang-format off
    {StandardField::ArtistUrl,      u"WOAR"sv, Nuls::Kept,    u""sv},
    {StandardField::BuyUrl,         u"WCOM"sv, Nuls::Kept,    u""sv},
    {StandardField::AudioUrl,       u"WOAF"sv, Nuls::Kept,    u""sv},
    {StandardField::CopyRight,      u"TCOP"sv, Nuls::Kept,    u""sv},
    {StandardField::Composer,       u"TCOM"sv, Nuls::Kept,    u""sv},
    {StandardField::OriginalArtist, u"TOPE"sv, Nuls::Kept,    u""sv},
    {StandardField::LinkTo,         u"WXXX"sv, Nuls::Kept,    u"\0"sv},
    {StandardField::PlayCounter,    u"PCNT"sv, Nuls::Kept,    u""sv},
    {StandardField::EncodedBy,      u"TENC"sv, Nuls::Kept,    u""sv},
    {StandardField::Title,          u"TIT2"sv, Nuls::Removed, u""sv},
    {StandardField::Artist,         u"TPE1"sv, Nuls::Removed, u""sv},
    {StandardField::Album,          u"TALB"sv, Nuls::Removed, u""sv},
    {StandardField::Year,           u"TYER"sv, Nuls::Kept,    u""sv},
    {StandardField::Comment,        u"COMM"sv, Nuls::Removed, u"\0nt\0"sv},
    {StandardField::Lyrics,         u"USLT"sv, Nuls::Kept,    u"\0"sv},
    {StandardField::OtherGenreName, u"TCON"sv, Nuls::Kept,    u""sv},
    {StandardField::Track,          u"TRCK"sv, Nuls::Kept,    u""sv},
    {StandardField::Publisher,      u"TPUB"sv, Nuls::Kept,    u""sv},
    // clang-format on
}};

[[nodiscard]] constexpr const StandardFieldRow& row_of(StandardField field) noexcept {
    return kStandardFields[static_cast<std::size_t>(field)];
}

// What the properties answer: the text last read or assigned, beside the frame store, because
// adding or removing frames by hand does not change it.
class StandardFieldTexts {
public:
    [[nodiscard]] bool empty() const noexcept {
        return std::all_of(texts_.begin(), texts_.end(),
                           [](const StoredText& text) { return text.empty(); });
    }
    // As a host reads it.
    [[nodiscard]] String get(StandardField field) const;
    void set(StandardField field, StoredText text) {
        if (field == StandardField::Comment) {
            more_comments_.clear();
        }
        this->text(field) = std::move(text);
    }
    // A comment as the reader finds it: several comments of a tag read as lines of one.
    void add_comment(StoredText text);

private:
    [[nodiscard]] StoredText& text(StandardField field) noexcept {
        return texts_[static_cast<std::size_t>(field)];
    }
    [[nodiscard]] const StoredText& text(StandardField field) const noexcept {
        return texts_[static_cast<std::size_t>(field)];
    }

    std::array<StoredText, kStandardFieldCount> texts_;
    std::vector<StoredText> more_comments_;  // those after the first, joined when asked for
};

}  // namespace brindle
