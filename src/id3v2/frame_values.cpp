#include "id3v2/frame_values.h"

#include <iterator>

namespace brindle {

std::size_t FrameValues::lower_bound(std::int32_t index) const noexcept {
    std::size_t first = 0;
    std::size_t last = size();
    // Appending is the usual case.
    if (last != 0 && slot(last - 1).index < index) {
        return last;
    }
    while (first < last) {
        const std::size_t middle = first + (last - first) / 2;
        if (slot(middle).index < index) {
            first = middle + 1;
        } else {
            last = middle;
        }
    }
    return first;
}

const StoredText* FrameValues::find(std::int32_t index) const noexcept {
    const std::size_t place = lower_bound(index);
    return place < size() && slot(place).index == index ? &slot(place).text : nullptr;
}

bool FrameValues::add(std::int32_t index, StoredText text) {
    const std::size_t place = lower_bound(index);
    if (place < size() && slot(place).index == index) {
        return false;
    }
    Slot added{std::move(text), index};
    if (place == 0) {
        if (has_first_) {
            rest_.insert(rest_.begin(), std::move(first_));
        }
        first_ = std::move(added);
        has_first_ = true;
    } else {
        rest_.insert(std::next(rest_.begin(), static_cast<std::ptrdiff_t>(place - 1)),
                     std::move(added));
    }
    return true;
}

bool FrameValues::remove(std::int32_t index) {
    const std::size_t place = lower_bound(index);
    if (place == size() || slot(place).index != index) {
        return false;
    }
    erase(place, place + 1);
    return true;
}

std::size_t FrameValues::remove_run_from_1() {
    const std::size_t first = lower_bound(1);
    std::size_t last = first;
    while (last < size() && std::cmp_equal(slot(last).index, last - first + 1)) {
        ++last;
    }
    erase(first, last);
    return last - first;
}

void FrameValues::erase(std::size_t first, std::size_t last) {
    const auto rest_at = [&](std::size_t place) {
        return std::next(rest_.begin(), static_cast<std::ptrdiff_t>(place) - 1);
    };
    if (first == last) {
        return;
    }
    if (first != 0) {
        rest_.erase(rest_at(first), rest_at(last));
        return;
    }
    if (last == size()) {
        rest_.clear();
        first_ = Slot{};
        has_first_ = false;
        return;
    }
    first_ = std::move(*rest_at(last));
    rest_.erase(rest_.begin(), rest_at(last + 1));
}

}  // namespace brindle
