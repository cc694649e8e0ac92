// Text that a tagger has labelled with another encoding, in its own one again.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <brindle/values.h>

namespace brindle::host {

// The encodings that a text can be repaired from, as the command line has them.
[[nodiscard]] std::vector<std::string> repairable_code_pages();

// What a text means that find_misread_encoding() takes for misread; none if that is not certain.
// In UTF-8 the text must be whole. In a code page of Cyrillic or Greek all words must be words by
// their letters and capitals, and in any other of these pages fewer of the letters must be usual
// ones.
[[nodiscard]] std::optional<String> repaired_text(const String& text, const std::string& code_page);

}  // namespace brindle::host
