// The values of one frame id.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "id3v2/stored_text.h"
#include "id3v2/tag_layout.h"

namespace brindle {

// A frame as the reader found it, not yet given to its id.
struct QueuedFrame {
    FrameId id;
    std::uint32_t size;
    const std::uint8_t* value;

    [[nodiscard]] StoredText text() const noexcept { return StoredText::in_file({value, size}); }
};
using FrameQueue = std::deque<QueuedFrame>;

// Values under their numbers, kept in the order of the numbers, and how many the id counts. Numbers
// are 1, 2, 3 ... as a rule, but a removed value leaves a gap, so that its successor can take its
// place; and the count does not follow each change.
//
// Most frame ids have one value, of number 1, and count one. All else is kept in a list of its own,
// so that a tag of a hundred thousand ids stays small.
class FrameValues {
public:
    struct Slot {
        StoredText text;
        std::int32_t index = 0;
    };

    FrameValues() = default;
    // The value of number 1; the count is 1.
    explicit FrameValues(StoredText text) noexcept : only_(std::move(text)) {}

    [[nodiscard]] std::size_t size() const noexcept;
    struct SlotView {
        const StoredText& text;
        std::int32_t index;
    };
    // By place, from 0, not by number.
    [[nodiscard]] SlotView slot(std::size_t place) const noexcept;
    [[nodiscard]] const StoredText* find(std::int32_t index) const noexcept;
    [[nodiscard]] std::optional<std::int32_t> count() const noexcept;

    // That many values more can be appended without memory.
    void make_room(std::size_t more);
    // Adds the values that the reader found after those that are counted, and counts them. Room
    // for them has been made; no value may have a higher number than the count yet.
    void append(FrameQueue::const_iterator first, const FrameQueue::const_iterator& last) noexcept;
    // False when the number is taken; the count is set in any case. All or nothing.
    bool add(std::int32_t index, StoredText text, std::optional<std::int32_t> count);
    // The same, and leaves the count as it is.
    bool add(std::int32_t index, StoredText text) { return add(index, std::move(text), count()); }
    bool remove(std::int32_t index);
    // Removes 1, 2, 3 ... until a number is missing; how many there were.
    std::size_t remove_run_from_1();
    void set_count(std::optional<std::int32_t> count);
    // Removes values, renumbers the others from 1, and returns the number of removed values.
    template <typename IsRemoved>
    std::size_t remove_if(const IsRemoved& is_removed) {
        auto& slots = list().slots;
        const std::size_t removed =
            std::erase_if(slots, [&](const Slot& slot) { return is_removed(slot.text); });
        std::int32_t number = 0;
        for (Slot& slot : slots) {
            ++number;
            slot.index = number;
        }
        list_->count = number;
        return removed;
    }

private:
    struct List {
        std::vector<Slot> slots;
        std::optional<std::int32_t> count;
    };
    static constexpr std::int32_t kOnlyIndex = 1;

    // Whether that many values, which would be the first ones, need no list.
    [[nodiscard]] bool needs_no_list_for(std::size_t more) const noexcept {
        return !list_ && only_.is_none() && more == 1;
    }
    // The list, with what was kept without one.
    List& list();

    StoredText only_ = StoredText::none();
    std::unique_ptr<List> list_;
};

}  // namespace brindle
