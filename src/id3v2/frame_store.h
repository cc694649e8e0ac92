// The frames of a tag in memory.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string_view>

#include <brindle/keyed_collection.h>
#include <brindle/values.h>

#include "id3v2/frame_values.h"
#include "id3v2/stored_text.h"
#include "util/hash_index.h"

namespace brindle {

// Three tables that belong together: the frame ids in the order first seen, how many values each
// id counts, and the values by id and number ("TXXX:3" is the third TXXX value).
//
// The first one is handed out to hosts, who may change it behind our back; so the other two never
// rely on it, and an id that it lacks may still have values here.
class FrameStore {
public:
    FrameStore() : frame_list_(std::make_shared<KeyedCollection>()) {}

    [[nodiscard]] const std::shared_ptr<KeyedCollection>& frame_list() const noexcept {
        return frame_list_;
    }
    // An id counts as listed when its entry says so; a host may have put anything there.
    [[nodiscard]] bool is_listed(std::u16string_view id) const;
    // None when the id has no count.
    [[nodiscard]] std::optional<std::int32_t> count(std::u16string_view id) const noexcept;
    // Null when there is no such value.
    [[nodiscard]] const StoredText* value(std::u16string_view id,
                                          std::int32_t index) const noexcept;
    // The values of all ids together.
    [[nodiscard]] std::int32_t value_count() const noexcept { return value_count_; }

    // A second store of the same frames; it may see the same file bytes.
    [[nodiscard]] FrameStore copy() const;

    // A value as the reader finds it: the next one of its id.
    void append(std::u16string_view id, StoredText text);
    // Adds a value. `index` 0 appends it; another one puts it where an earlier value was removed
    // and leaves the count alone. For an id that is not in the list yet, `index` is ignored.
    void add(const String& id, std::u16string_view text, std::int32_t index);
    // Removes one value; its number stays free, and the count stays as it is. An id whose last
    // value it was goes altogether.
    void remove_value(const String& id, std::int32_t index);
    // Removes an id with its values 1, 2, 3 ...
    void remove_frame(const String& id);
    // The number of the custom value ("TXXX") of that description; 0 when there is none.
    [[nodiscard]] std::int32_t find_custom(std::u16string_view description) const noexcept;

private:
    struct Record {
        String id;
        std::optional<std::int32_t> count;
        FrameValues values;
    };

    [[nodiscard]] const Record* find(std::u16string_view id) const noexcept;
    Record& find_or_add(std::u16string_view id);
    bool add_value(Record& record, std::int32_t index, StoredText text);
    void list_id(const String& id);
    void forget(const String& id, Record& record);

    std::shared_ptr<KeyedCollection> frame_list_;
    std::deque<Record> records_;
    HashIndex index_;
    std::int32_t value_count_ = 0;
};

// User-defined text frames, which hold the custom and radio fields.
inline constexpr std::u16string_view kCustomFrame = u"TXXX";

}  // namespace brindle
