// The form of a text that hosts and other programs read alike.
//
// Hosts take the bytes of a text for characters of their code page, in any encoding; other
// programs go by the encoding. Both read text in ISO-8859-1, of characters that the code page has
// at the same place, without NULs between values.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include <brindle/values.h>

namespace brindle {

enum class CommonFormResult {
    AsBefore,  // it has the form already, or is no text
    Recoded,
    Joined,  // recoded, and of several values one with "/" between them
    // There is none, so it stays as it is: a character is missing in the code page, or at another
    // place there than in ISO-8859-1; or it is a link (WOAR and its like), of which hosts leave out
    // the first byte.
    NoneThere,
};

struct CommonForm {
    CommonFormResult result = CommonFormResult::AsBefore;
    std::vector<std::uint8_t> content;  // of the frame, where it is recoded
};

// Of a frame of version 2.3 with that id and content. Lists of people (IPLS, TIPL, TMCL) keep their
// values apart. A comment without a description loses its language, which hosts would read as part
// of it. `was_version4`: genres by number get the parentheses of version 2.3.
[[nodiscard]] CommonForm in_common_form(std::string_view id, std::span<const std::uint8_t> content,
                                        bool was_version4);

// The content of a list of people (IPLS): in the common form where that can be, else in UTF-16.
[[nodiscard]] std::vector<std::uint8_t> list_of_people(const std::vector<String>& values);

}  // namespace brindle
