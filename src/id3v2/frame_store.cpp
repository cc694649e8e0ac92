#include "id3v2/frame_store.h"

#include <algorithm>
#include <new>
#include <utility>

#include "util/numeric_text.h"
#include "util/skip_errors.h"

namespace brindle {

namespace {

PackedKey packed(FrameId id) {
    constexpr std::uint32_t kNotAscii = 0x8080'8080;
    const auto bytes = static_cast<std::uint32_t>(id);
    if (id == kNoFrameId || (bytes & kNotAscii) != 0) {
        return pack_short(text_of(id));
    }
    const std::uint64_t last = bytes;
    return PackedKey{(last & 0xFF) | (last & 0xFF00) << 8U | (last & 0xFF'0000) << 16U |
                     (last & 0xFF00'0000) << 24U};
}

bool is_described_by(const StoredText& text, std::u16string_view description) {
    const std::size_t nul = text.find_nul();
    return nul < text.size() && text.equals(0, nul, description);
}

}  // namespace

// Frames go when they have their places, so that no memory is needed twice, and a lack of it leaves
// nothing out.
void FrameStore::sort_rest() const {
    std::size_t last = 0;
    while (!unsorted_.empty()) {
        const FrameId id = unsorted_.front().id;
        const auto end = std::find_if(unsorted_.cbegin(), unsorted_.cend(),
                                      [id](const QueuedFrame& frame) { return frame.id != id; });
        last = sort_run(end, last);
        unsorted_.erase(unsorted_.cbegin(), end);
    }
}

// The first frames, up to `end`, are of one id. The number of their record; `guess` is that of the
// frames before, which are often of the same id.
std::size_t FrameStore::sort_run(const FrameQueue::const_iterator& end, std::size_t guess) const {
    const auto begin = unsorted_.cbegin();
    const auto count = static_cast<std::size_t>(end - begin);
    const PackedKey key = packed(begin->id);
    std::size_t known =
        guess < records_.size() && records_[guess].id == key ? guess : find_sorted(key);
    if (known == HashIndex::kNotFound) {
        known = records_.size();
        reserve_few(records_);
        records_.emplace_back(key);
    }
    FrameValues& values = records_[known].values;
    values.make_room(count);
    if (!values.count()) {
        frame_list_->append(key);
    }
    values.append(begin, end);
    value_count_ += static_cast<std::int32_t>(count);
    return known;
}

std::size_t FrameStore::find_sorted(PackedKey id) const {
    if (records_.size() <= kFewEntries) {
        const auto found = std::find_if(records_.begin(), records_.end(),
                                        [id](const Record& record) { return record.id == id; });
        return found == records_.end() ? HashIndex::kNotFound
                                       : static_cast<std::size_t>(found - records_.begin());
    }
    const auto hash_of = [this](std::size_t entry) { return TextHash::of(records_[entry].id); };
    while (index_.size() < records_.size()) {
        index_.make_room(hash_of);
        index_.add(hash_of(index_.size()), index_.size());
    }
    return index_.find(TextHash::of(id),
                       [&](std::size_t entry) { return records_[entry].id == id; });
}

FrameStore::Record* FrameStore::find(std::u16string_view id) const {
    sort();
    const PackedKey key = packer_.find(id);
    const std::size_t entry = key == kNoKey ? HashIndex::kNotFound : find_sorted(key);
    return entry == HashIndex::kNotFound ? nullptr : &records_[entry];
}

FrameStore::Record& FrameStore::find_or_add(std::u16string_view id) {
    if (Record* const known = find(id)) {
        return *known;
    }
    records_.emplace_back(packer_.pack(id));
    return records_.back();
}

bool FrameStore::is_listed(std::u16string_view id) const {
    sort();
    return frame_list_->Exists(id) && !to_text(frame_list_->Item(id)).empty();
}

std::optional<std::int32_t> FrameStore::count(std::u16string_view id) const {
    const Record* const record = find(id);
    return record == nullptr ? std::nullopt : record->values.count();
}

const StoredText* FrameStore::value(std::u16string_view id, std::int32_t index) const {
    const Record* const record = find(id);
    return record == nullptr ? nullptr : record->values.find(index);
}

FrameStore FrameStore::copy() const {
    sort();
    FrameStore copied;
    for (std::int32_t position = 1; position <= frame_list_->Count(); ++position) {
        const String id = to_text(frame_list_->Item(position));
        if (!copied.frame_list_->Exists(id)) {
            copied.frame_list_->AddKey(id);
        }
    }
    for (const Record& record : records_) {
        FrameValues& twins = copied.find_or_add(packer_.text(record.id)).values;
        for (std::size_t place = 0; place < record.values.size(); ++place) {
            const FrameValues::SlotView slot = record.values.slot(place);
            twins.add(slot.index, slot.text.share(), record.values.count());
        }
        twins.set_count(record.values.count());
    }
    copied.value_count_ = value_count_;
    return copied;
}

// False when a host has listed it already.
bool FrameStore::list_id(const String& id) {
    try {
        frame_list_->AddKey(id);
        return true;
    } catch (const Error&) {
        return false;
    }
}

// All or nothing: a number that is counted and has no value would hide the values after it.
void FrameStore::add(const String& id, std::u16string_view text, std::int32_t index) {
    StoredText stored(text);
    FrameValues& values = find_or_add(id).values;
    std::optional<std::int32_t> count = values.count();
    bool lists = false;
    if (!is_listed(id)) {
        lists = true;
        index = 1;
    } else if (index == 0) {
        index = count.value_or(0) + 1;
        count = index;
    } else {
        lists = !is_listed(kCustomFrame);
    }
    if (lists) {
        count = count.value_or(1);
    }
    const bool listed = lists && list_id(id);
    try {
        value_count_ += values.add(index, std::move(stored), count) ? 1 : 0;
    } catch (const std::bad_alloc&) {
        if (listed) {
            frame_list_->Remove(id);
        }
        throw;
    }
}

void FrameStore::remove_value(const String& id, std::int32_t index) {
    Record& record = find_or_add(id);
    value_count_ -= record.values.remove(index) ? 1 : 0;
    for (std::size_t place = 0; place < record.values.size(); ++place) {
        const FrameValues::SlotView slot = record.values.slot(place);
        if (slot.index >= 1 && slot.index <= value_count_ && !slot.text.empty()) {
            return;
        }
    }
    forget(id, record);
}

void FrameStore::remove_frame(const String& id) {
    Record& record = find_or_add(id);
    value_count_ -= static_cast<std::int32_t>(record.values.remove_run_from_1());
    forget(id, record);
}

void FrameStore::forget(const String& id, Record& record) {
    skip_errors([&] { frame_list_->Remove(id); });
    record.values.set_count(std::nullopt);
}

std::int32_t FrameStore::find_custom(std::u16string_view description) const {
    const Record* const record = find(kCustomFrame);
    if (record == nullptr) {
        return 0;
    }
    for (std::int32_t number = 1;; ++number) {
        const StoredText* text = record->values.find(number);
        if (text == nullptr || text->empty()) {
            return 0;
        }
        if (is_described_by(*text, description)) {
            return number;
        }
    }
}

void FrameStore::remove_custom(std::u16string_view description) {
    Record* const record = find(kCustomFrame);
    if (record == nullptr) {
        return;
    }
    value_count_ -= static_cast<std::int32_t>(record->values.remove_if(
        [&](const StoredText& text) { return is_described_by(text, description); }));
    if (record->values.size() == 0) {
        forget(String(kCustomFrame), *record);
    }
}

}  // namespace brindle
