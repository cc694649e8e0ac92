#include "id3v2/frame_values.h"

#include <algorithm>
#include <iterator>

namespace brindle {
namespace {

// The place of the first number that is not below `index`.
template <typename Slots>
auto lower_bound(Slots& slots, std::int32_t index) noexcept {
    return std::lower_bound(
        slots.begin(), slots.end(), index,
        [](const FrameValues::Slot& slot, std::int32_t wanted) { return slot.index < wanted; });
}

template <typename Slots>
auto find_slot(Slots& slots, std::int32_t index) noexcept {
    // Where nothing was removed, each number has its own place.
    if (index >= 1 && index <= std::ssize(slots)) {
        const auto usual = slots.begin() + (index - 1);
        if (usual->index == index) {
            return usual;
        }
    }
    const auto place = lower_bound(slots, index);
    return place != slots.end() && place->index == index ? place : slots.end();
}

}  // namespace

std::size_t FrameValues::size() const noexcept {
    if (list_) {
        return list_->slots.size();
    }
    return only_.is_none() ? 0 : 1;
}

FrameValues::SlotView FrameValues::slot(std::size_t place) const noexcept {
    if (!list_) {
        return {only_, kOnlyIndex};
    }
    const Slot& slot = list_->slots[place];
    return {slot.text, slot.index};
}

const StoredText* FrameValues::find(std::int32_t index) const noexcept {
    if (!list_) {
        return index == kOnlyIndex && !only_.is_none() ? &only_ : nullptr;
    }
    const auto slot = find_slot(list_->slots, index);
    return slot == list_->slots.end() ? nullptr : &slot->text;
}

std::optional<std::int32_t> FrameValues::count() const noexcept {
    if (list_) {
        return list_->count;
    }
    return only_.is_none() ? std::nullopt : std::optional<std::int32_t>(1);
}

FrameValues::List& FrameValues::list() {
    if (!list_) {
        auto made = std::make_unique<List>();
        if (!only_.is_none()) {
            constexpr std::size_t kUsual = 4;
            made->slots.reserve(kUsual);
        }
        made->count = count();
        if (!only_.is_none()) {
            made->slots.push_back({StoredText(), kOnlyIndex});
            made->slots.back().text = std::exchange(only_, StoredText::none());
        }
        list_ = std::move(made);
    }
    return *list_;
}

void FrameValues::make_room(std::size_t more) {
    if (needs_no_list_for(more)) {
        return;
    }
    auto& slots = list().slots;
    const std::size_t needed = slots.size() + more;
    if (needed > slots.capacity()) {
        // Not just what is needed, or adding a few again and again would copy all of them each
        // time.
        slots.reserve(std::max(needed, 2 * slots.capacity()));
    }
}

void FrameValues::append(FrameQueue::const_iterator first,
                         const FrameQueue::const_iterator& last) noexcept {
    if (needs_no_list_for(static_cast<std::size_t>(last - first))) {
        only_ = first->text();
        return;
    }
    List& all = list();
    std::int32_t number = all.count.value_or(0);
    for (; first != last; ++first) {
        ++number;
        all.slots.push_back({first->text(), number});
    }
    all.count = number;
}

bool FrameValues::add(std::int32_t index, StoredText text, std::optional<std::int32_t> count) {
    if (!list_ && only_.is_none() && index == kOnlyIndex && count == 1) {
        only_ = std::move(text);
        return true;
    }
    List& all = list();
    // Appending is the usual case.
    if (all.slots.empty() || all.slots.back().index < index) {
        all.slots.push_back({std::move(text), index});
        all.count = count;
        return true;
    }
    const auto place = lower_bound(all.slots, index);
    const bool is_free = place == all.slots.end() || place->index != index;
    if (is_free) {
        all.slots.insert(place, {std::move(text), index});
    }
    all.count = count;
    return is_free;
}

bool FrameValues::remove(std::int32_t index) {
    auto& slots = list().slots;
    const auto slot = find_slot(slots, index);
    if (slot == slots.end()) {
        return false;
    }
    slots.erase(slot);
    return true;
}

std::size_t FrameValues::remove_run_from_1() {
    auto& slots = list().slots;
    const auto first = lower_bound(slots, kOnlyIndex);
    auto last = first;
    while (last != slots.end() && std::cmp_equal(last->index, last - first + 1)) {
        ++last;
    }
    const auto removed = static_cast<std::size_t>(last - first);
    slots.erase(first, last);
    return removed;
}

void FrameValues::set_count(std::optional<std::int32_t> count) {
    if (count == this->count()) {
        return;
    }
    if (list_ && list_->slots.empty() && !count) {
        list_.reset();
        return;
    }
    list().count = count;
}

}  // namespace brindle
