#include "id3v2/frame_fields.h"

#include <algorithm>
#include <iterator>

namespace brindle {

namespace {

using enum FrameField;

// From "ID3 tag version 2.4.0 - Native Frames", the sections in brackets.
constexpr FrameField kText[] = {Encoding, Text};                              // 4.2
constexpr FrameField kUserText[] = {Encoding, EncodedString, Text};           // 4.2.6 TXXX
constexpr FrameField kUserLink[] = {Encoding, EncodedString, Data};           // 4.3.2 WXXX
constexpr FrameField kComment[] = {Encoding, Language, EncodedString, Text};  // 4.8, 4.10
constexpr FrameField kSyncedLyrics[] = {Encoding, Language, TwoBytes, EncodedString,
                                        SyncedText};                                       // 4.9
constexpr FrameField kPicture[] = {Encoding, Latin1String, OneByte, EncodedString, Data};  // 4.14
constexpr FrameField kObject[] = {Encoding, Latin1String, EncodedString, EncodedString,
                                  Data};                                   // 4.15
constexpr FrameField kTermsOfUse[] = {Encoding, Language, Text};           // 4.22
constexpr FrameField kOwnership[] = {Encoding, Latin1String, Date, Text};  // 4.23
constexpr FrameField kCommercial[] = {Encoding,      Latin1String, Date,
                                      Latin1String,  OneByte,      EncodedString,
                                      EncodedString, Latin1String, Data};  // 4.24

struct Row {
    std::string_view id;
    std::span<const FrameField> fields;
};
constexpr Row kRows[] = {
    {"TXXX", kUserText},
    {"WXXX", kUserLink},
    {"COMM", kComment},
    {"USLT", kComment},
    {"SYLT", kSyncedLyrics},
    {"APIC", kPicture},
    {"GEOB", kObject},
    {"USER", kTermsOfUse},
    {"OWNE", kOwnership},
    {"COMR", kCommercial},
    // Not documented; a player's own.
    {"GRP1", kText},
    {"MVNM", kText},
    {"MVIN", kText},
};

}  // namespace

std::size_t width_of(FrameField field) noexcept {
    switch (field) {
        case Encoding:
        case OneByte:
            return 1;
        case TwoBytes:
            return 2;
        case Language:
            return 3;
        case Date:
            return 8;
        default:
            return 0;
    }
}

bool is_link(std::string_view id) noexcept {
    return id.substr(0, 1) == "W" && id != "WXXX";
}

std::span<const FrameField> fields_of(std::string_view id) noexcept {
    const auto* const row = std::find_if(std::begin(kRows), std::end(kRows),
                                         [id](const Row& candidate) { return candidate.id == id; });
    if (row != std::end(kRows)) {
        return row->fields;
    }
    return id.substr(0, 1) == "T" ? std::span<const FrameField>(kText)
                                  : std::span<const FrameField>();
}

bool holds_text(std::string_view id) noexcept {
    const auto fields = fields_of(id);
    return std::find(fields.begin(), fields.end(), Text) != fields.end();
}

bool holds_only_text(std::string_view id) noexcept {
    const auto fields = fields_of(id);
    return holds_text(id) && std::all_of(fields.begin(), fields.end(), [](FrameField field) {
               return field == Encoding || field == Language || field == EncodedString ||
                      field == Text;
           });
}

}  // namespace brindle
