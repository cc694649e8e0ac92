// Text of foreign origin on one line of a terminal.
#pragma once

#include <string>
#include <string_view>

#include <brindle/values.h>

namespace brindle::host {

// The text with its control characters made visible: a line feed becomes \n, a carriage return \r,
// a tab \t, any other C0 control or DEL \xNN, a C1 control \u00NN. A tag or a file name can
// otherwise end a line or send commands to the terminal. Bytes that are no UTF-8 stay as they are.
[[nodiscard]] std::string printable(std::string_view utf8);
[[nodiscard]] std::string printable(const String& text);

}  // namespace brindle::host
