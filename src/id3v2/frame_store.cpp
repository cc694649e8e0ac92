#include "id3v2/frame_store.h"

#include <algorithm>
#include <new>
#include <utility>

#include "util/numeric_text.h"
#include "util/skip_errors.h"

namespace brindle {

const FrameStore::Record* FrameStore::find(std::u16string_view id) const noexcept {
    const std::size_t at =
        index_.find(TextHash::of(id), [&](std::size_t entry) { return records_[entry].id == id; });
    return at == HashIndex::kNotFound ? nullptr : &records_[at];
}

FrameStore::Record& FrameStore::find_or_add(std::u16string_view id) {
    const std::uint32_t hash = TextHash::of(id);
    const std::size_t at =
        index_.find(hash, [&](std::size_t entry) { return records_[entry].id == id; });
    if (at != HashIndex::kNotFound) {
        return records_[at];
    }
    index_.make_room();
    records_.push_back({String(id), {}, {}});
    index_.add(hash, records_.size() - 1);
    return records_.back();
}

bool FrameStore::add_value(Record& record, std::int32_t index, StoredText text) {
    const bool added = record.values.add(index, std::move(text));
    value_count_ += added ? 1 : 0;
    return added;
}

bool FrameStore::is_listed(std::u16string_view id) const {
    return frame_list_->Exists(id) && !to_text(frame_list_->Item(id)).empty();
}

std::optional<std::int32_t> FrameStore::count(std::u16string_view id) const noexcept {
    const Record* record = find(id);
    return record == nullptr ? std::nullopt : record->count;
}

const StoredText* FrameStore::value(std::u16string_view id, std::int32_t index) const noexcept {
    const Record* record = find(id);
    return record == nullptr ? nullptr : record->values.find(index);
}

FrameStore FrameStore::copy() const {
    FrameStore copied;
    for (std::int32_t position = 1; position <= frame_list_->Count(); ++position) {
        const String id = to_text(frame_list_->Item(position));
        if (!copied.frame_list_->Exists(id)) {
            copied.frame_list_->AddKey(id);
        }
    }
    for (const Record& record : records_) {
        Record& twin = copied.find_or_add(record.id);
        twin.count = record.count;
        for (std::size_t place = 0; place < record.values.size(); ++place) {
            const FrameValues::Slot& slot = record.values.slot(place);
            copied.add_value(twin, slot.index, slot.text.share());
        }
    }
    return copied;
}

// A host may have listed it already.
void FrameStore::list_id(const String& id) {
    try {
        frame_list_->AddKey(id);
    } catch (const Error&) {
        return;
    }
}

void FrameStore::append(std::u16string_view id, StoredText text) {
    Record& record = find_or_add(id);
    if (!record.count) {
        frame_list_->AddKey(id);
    }
    const std::int32_t number = record.count.value_or(0) + 1;
    add_value(record, number, std::move(text));
    record.count = number;
}

// All or nothing: a number that is counted and has no value would hide the values behind it.
void FrameStore::add(const String& id, std::u16string_view text, std::int32_t index) {
    StoredText stored(text);
    Record& record = find_or_add(id);
    std::optional<std::int32_t> count = record.count;
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
    const bool added = add_value(record, index, std::move(stored));
    if (lists) {
        count = count.value_or(1);
        try {
            list_id(id);
        } catch (const std::bad_alloc&) {
            value_count_ -= added && record.values.remove(index) ? 1 : 0;
            throw;
        }
    }
    record.count = count;
}

void FrameStore::remove_value(const String& id, std::int32_t index) {
    Record& record = find_or_add(id);
    value_count_ -= record.values.remove(index) ? 1 : 0;
    for (std::size_t place = 0; place < record.values.size(); ++place) {
        const FrameValues::Slot& slot = record.values.slot(place);
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
    record.count.reset();
}

std::int32_t FrameStore::find_custom(std::u16string_view description) const noexcept {
    const Record* record = find(kCustomFrame);
    if (record == nullptr) {
        return 0;
    }
    for (std::int32_t number = 1;; ++number) {
        const StoredText* text = record->values.find(number);
        if (text == nullptr || text->empty()) {
            return 0;
        }
        const std::size_t nul = text->find_nul();
        if (nul < text->size() && text->equals(0, nul, description)) {
            return number;
        }
    }
}

}  // namespace brindle
