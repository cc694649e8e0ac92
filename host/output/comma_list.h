#pragma once

#include <string>

namespace brindle::host {

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
