// The page around its data; page/page.html, from which it is made when the program is built, shows
// all of it.
#pragma once

#include <string_view>

namespace brindle::host {

extern const std::string_view kPageBeforeData;
extern const std::string_view kPageAfterData;

}  // namespace brindle::host
