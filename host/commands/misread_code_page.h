// Text in one encoding that a tagger has labelled as another.
#pragma once

#include <optional>
#include <string>

#include <brindle/values.h>

namespace brindle::host {

enum class MeantEncoding { Utf8, CyrillicOrGreek };

struct MisreadText {
    MeantEncoding encoding;
    String meant;  // of UTF-8; which of several code pages was meant is not known
};

// The text's bytes in ISO-8859-1 or Windows-1252; none where it has other characters.
[[nodiscard]] std::optional<std::string> single_bytes(const String& text);

// Whether a text as it is read makes sense only in another encoding. A guess that never
// misjudges text of a language written in Latin letters.
[[nodiscard]] std::optional<MisreadText> find_misread_encoding(const String& text);

}  // namespace brindle::host
