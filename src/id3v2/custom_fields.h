// The custom fields of a tag by name.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <span>
#include <string_view>
#include <vector>

#include <brindle/values.h>

#include "util/hash_index.h"

namespace brindle {

// A map beside the frame store, so that a field is found without a search through all values.
// Names are compared exactly.
class CustomFields {
    using Frame = std::span<const std::uint8_t>;

public:
    // True until anything was read or set.
    [[nodiscard]] bool empty() const noexcept { return read_.empty() && set_.empty(); }
    // A custom frame as the reader finds it, whose bytes are owned elsewhere: name, NUL, value;
    // the bytes after another NUL are ignored. A name seen before keeps its first
    // value, and a frame without a NUL is no field.
    void read(const Frame& frame) {
        if (!frame.empty()) {
            reserve_few(read_);
            read_.push_back(frame);
        }
    }
    // Adds a field or replaces its value.
    void set(std::u16string_view name, std::u16string_view value);
    void remove(std::u16string_view name);
    [[nodiscard]] bool exists(std::u16string_view name) const;
    // Without NULs; "" when there is no such field.
    [[nodiscard]] String text(std::u16string_view name) const;
    // By a name of ASCII, as those of the radio fields are, which needs no conversion.
    [[nodiscard]] String text(std::string_view name) const;

private:
    // Null when no frame has that name.
    template <typename Name>
    [[nodiscard]] const Frame* find_read(Name name) const;
    void index_all() const;

    // Frames are parsed when a field is requested: most never are.
    std::vector<Frame> read_;
    std::map<String, String, std::less<>> set_;  // these count before those that were read
    // Of the first `indexed_` frames; made when a search needs it.
    mutable HashIndex index_;
    mutable std::size_t indexed_ = 0;
};

// A tag's values are split at this character: a custom field's name from its value.
inline constexpr char16_t kSeparator = u'\0';

// A custom frame without its encoding byte.
[[nodiscard]] inline String custom_frame(const String& name, const String& value) {
    return name + kSeparator + value;
}

}  // namespace brindle
