// The frames of a tag in memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include <brindle/keyed_collection.h>
#include <brindle/values.h>

#include "id3v2/frame_values.h"
#include "id3v2/stored_text.h"
#include "id3v2/tag_layout.h"
#include "util/hash_index.h"
#include "util/packed_key.h"

namespace brindle {

// Three tables that belong together: the frame ids in the order first seen, how many values each
// id counts, and the values by id and number ("TXXX:3" is the third TXXX value).
//
// The first one is handed out to hosts, who may change it at any time; so the other two never
// rely on it, and an id that it lacks may still have values here.
//
// The reader only appends frames. They are sorted by id when one is first requested: a library
// scan reads a few properties of each file and seldom a frame. So any member may raise
// std::bad_alloc; what was not sorted then waits for the next question.
class FrameStore {
public:
    FrameStore() : frame_list_(std::make_shared<KeyedCollection>()) {}

    [[nodiscard]] const std::shared_ptr<KeyedCollection>& frame_list() const {
        sort();
        return frame_list_;
    }
    // An id counts as listed when its entry says so; a host may have put anything there.
    [[nodiscard]] bool is_listed(std::u16string_view id) const;
    // None when the id has no count.
    [[nodiscard]] std::optional<std::int32_t> count(std::u16string_view id) const;
    // All values of an id; null when it never had one.
    [[nodiscard]] const FrameValues* values(std::u16string_view id) const {
        const Record* const record = find(id);
        return record == nullptr ? nullptr : &record->values;
    }
    // Null when there is no such value.
    [[nodiscard]] const StoredText* value(std::u16string_view id, std::int32_t index) const;
    // The values of all ids together.
    [[nodiscard]] std::int32_t value_count() const {
        sort();
        return value_count_;
    }

    // True until anything was added or the list was handed out.
    [[nodiscard]] bool is_new() const noexcept {
        return unsorted_.empty() && records_.empty() && frame_list_.use_count() == 1 &&
               frame_list_->Count() == 0;
    }
    // A second store of the same frames; it may see the same file bytes.
    [[nodiscard]] FrameStore copy() const;

    // A value as the reader finds it: the next one of its id, as the reader is done before a host
    // puts values at numbers of its own. The bytes are owned elsewhere.
    void append(FrameId id, std::span<const std::uint8_t> value) {
        unsorted_.push_back({id, static_cast<std::uint32_t>(value.size()), value.data()});
    }
    // Adds a value. `index` 0 appends it; another one puts it where an earlier value was removed
    // and leaves the count alone. For an id that is not in the list yet, `index` is ignored.
    void add(const String& id, std::u16string_view text, std::int32_t index);
    // Removes one value; its number stays free, and the count stays as it is. An id whose last
    // value it was goes altogether.
    void remove_value(const String& id, std::int32_t index);
    // Removes an id with its values 1, 2, 3 ...
    void remove_frame(const String& id);
    // Removes the custom values of that description. The others are renumbered.
    void remove_custom(std::u16string_view description);
    // The number of the custom value ("TXXX") of that description; 0 when there is none.
    [[nodiscard]] std::int32_t find_custom(std::u16string_view description) const;

private:
    struct Record {
        explicit Record(PackedKey of) noexcept : id(of) {}

        PackedKey id;
        FrameValues values;
    };
    // Gives the frames that the reader has lined up to their ids.
    void sort() const {
        if (!unsorted_.empty()) {
            sort_rest();
        }
    }
    void sort_rest() const;
    std::size_t sort_run(const FrameQueue::const_iterator& end, std::size_t guess) const;
    [[nodiscard]] std::size_t find_sorted(PackedKey id) const;
    [[nodiscard]] Record* find(std::u16string_view id) const;
    Record& find_or_add(std::u16string_view id);
    bool list_id(const String& id);
    void forget(const String& id, Record& record);

    std::shared_ptr<KeyedCollection> frame_list_;
    // What follows changes in the sorting too, which shows from outside in nothing but time.
    mutable FrameQueue unsorted_;
    mutable KeyPacker packer_;
    mutable std::vector<Record> records_;
    mutable HashIndex index_;  // of the records, when there are more than a few
    mutable std::int32_t value_count_ = 0;
};

// User-defined text frames, which hold the custom and radio fields.
inline constexpr std::u16string_view kCustomFrame = u"TXXX";

}  // namespace brindle
