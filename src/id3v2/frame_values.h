// The values of one frame id.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "id3v2/stored_text.h"

namespace brindle {

// Values under their numbers, kept in the order of the numbers. Numbers are 1, 2, 3 ... as a rule,
// but a removed value leaves a gap, so that its successor can take its place. Most frame ids have
// one value only, which needs no list of its own.
class FrameValues {
public:
    struct Slot {
        StoredText text;
        std::int32_t index = 0;
    };

    [[nodiscard]] std::size_t size() const noexcept { return has_first_ ? 1 + rest_.size() : 0; }
    // By place, from 0, not by number.
    [[nodiscard]] const Slot& slot(std::size_t place) const noexcept {
        return place == 0 ? first_ : rest_[place - 1];
    }
    [[nodiscard]] const StoredText* find(std::int32_t index) const noexcept;
    // False when the number is taken.
    bool add(std::int32_t index, StoredText text);
    bool remove(std::int32_t index);
    // Removes 1, 2, 3 ... until a number is missing; how many there were.
    std::size_t remove_run_from_1();

private:
    // The place of the first number that is not below `index`.
    [[nodiscard]] std::size_t lower_bound(std::int32_t index) const noexcept;
    void erase(std::size_t first, std::size_t last);

    Slot first_;
    bool has_first_ = false;
    std::vector<Slot> rest_;
};

}  // namespace brindle
