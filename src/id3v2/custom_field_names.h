// The names of user-defined texts in which playout systems keep their fields, letter for letter.
#pragma once

#include <algorithm>
#include <array>
#include <string_view>

#include <brindle/values.h>

namespace brindle {

inline constexpr std::string_view kAgency = "Agency";
inline constexpr std::string_view kAccountExec = "Account Exec";
inline constexpr std::string_view kCopy = "Copy";
inline constexpr std::string_view kEndstyle = "End";
inline constexpr std::string_view kCategory = "Category";
inline constexpr std::string_view kNoFade = "NoFade";
inline constexpr std::string_view kIntro = "Intro";
inline constexpr std::string_view kOutro = "OutromSStart";
inline constexpr std::string_view kSecTone = "Sec Tone";
inline constexpr std::string_view kSpeed = "TarnSpeed";
inline constexpr std::string_view kVolume = "Volume";
inline constexpr std::string_view kOpener = "Opener";
inline constexpr std::string_view kCueIn = "Cue In";
inline constexpr std::string_view kCategoryLevel = "CatLevel";

inline constexpr std::array kSchedulingFields{
    kAgency, kAccountExec, kCopy,  kEndstyle, kCategory, kNoFade, kIntro,
    kOutro,  kSecTone,     kSpeed, kVolume,   kOpener,   kCueIn,  kCategoryLevel,
};

[[nodiscard]] inline bool is_scheduling_field(const String& name) {
    return std::any_of(kSchedulingFields.begin(), kSchedulingFields.end(),
                       [&](std::string_view field) {
                           return std::equal(field.begin(), field.end(), name.begin(), name.end());
                       });
}

// The one that every saved tag bears, and its value.
inline const String kSavedStampName = u"TAGGED BY";
inline const String kSavedStampValue = u"CorvaneTagger- Revised Feb 2011";

}  // namespace brindle
