// User-defined texts (TXXX) by their names.
#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include <brindle/tag_facts.h>

namespace brindle::host {

// Some programs write all names in capitals, and some read them in any case.
[[nodiscard]] bool is_same_name(std::u16string_view one, std::u16string_view other);

// All texts of that name in any case, in the order of the file.
[[nodiscard]] std::vector<const TagText*> texts_named(const TagFacts& facts,
                                                      std::u16string_view name);

// The value under that name, else that of the first text with the name in any case.
[[nodiscard]] std::optional<String> custom_text(const TagFacts& facts, std::u16string_view name);

}  // namespace brindle::host
