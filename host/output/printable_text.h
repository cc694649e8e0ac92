// Text from files on one line of a terminal.
#pragma once

#include <concepts>
#include <string>
#include <string_view>

#include <brindle/values.h>

namespace brindle::host {

// The text with invisible characters escaped: a line feed becomes \n, a carriage return \r, a tab
// \t, any other C0 control or DEL \xNN; C1 controls, bidirectional and other format characters, and
// separators of lines \uNNNN or \UNNNNNNNN. A tag or a file name can otherwise end a line, send
// commands to the terminal or show text in another order. A byte that is not UTF-8 becomes \xNN,
// because other programs take a text with such a byte for binary.
[[nodiscard]] std::string printable(std::string_view utf8);
[[nodiscard]] std::string printable(const String& text);
// The same in quotation marks.
[[nodiscard]] std::string in_quotes(const String& text);

// `1 frame`, `2 frames`
template <std::integral Count>
[[nodiscard]] std::string counted(Count count, const std::string& one) {
    return std::to_string(count) + " " + one + (count == 1 ? "" : "s");
}

// `one, another`: the text of each item.
template <class Items, class TextOf>
[[nodiscard]] std::string comma_list(const Items& items, TextOf text_of) {
    std::string list;
    for (const auto& item : items) {
        list += (list.empty() ? "" : ", ") + text_of(item);
    }
    return list;
}

}  // namespace brindle::host
