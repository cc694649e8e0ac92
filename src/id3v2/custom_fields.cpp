#include "id3v2/custom_fields.h"

#include <algorithm>
#include <cstring>
#include <optional>

#include "util/code_page.h"
#include "util/find_byte.h"

namespace brindle {

namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::uint8_t kNul = 0;
constexpr std::uint8_t kFirstOther = 0x80;  // all code pages agree on ASCII, which ends here

// None of a frame that is no field.
std::optional<Bytes> name_of(Bytes frame) noexcept {
    const std::size_t nul = find_byte(frame, kNul);
    return nul == frame.size() ? std::nullopt : std::optional(frame.first(nul));
}

// Behind a name of that length.
Bytes value_of(Bytes frame, std::size_t name) noexcept {
    const Bytes rest = frame.subspan(name + 1);
    return rest.first(find_byte(rest, kNul));
}

// An ASCII name without NULs.
bool has_name(Bytes frame, std::string_view name) noexcept {
    return frame.size() > name.size() && frame[name.size()] == kNul &&
           std::memcmp(frame.data(), name.data(), name.size()) == 0;
}

bool has_name(Bytes frame, std::u16string_view name) noexcept {
    if (frame.size() <= name.size() || frame[name.size()] != kNul) {
        return false;
    }
    for (std::size_t i = 0; i < name.size(); ++i) {
        const char16_t unit = frame[i] < kFirstOther ? frame[i] : widen(frame[i]);
        if (unit != name[i] || unit == kSeparator) {
            return false;
        }
    }
    return true;
}

// What a frame of that name begins with.
std::uint8_t initial_of(std::string_view name) noexcept {
    return name.empty() ? kNul : static_cast<std::uint8_t>(name.front());
}
std::uint8_t initial_of(std::u16string_view name) noexcept {
    return name.empty() ? kNul : narrow(name.front());
}

std::uint32_t hash_of(Bytes name) noexcept {
    TextHash hash;
    for (const std::uint8_t byte : name) {
        hash.add(widen(byte));
    }
    return hash.value();
}
std::uint32_t hash_of(std::string_view name) noexcept {
    return hash_of(Bytes(reinterpret_cast<const std::uint8_t*>(name.data()), name.size()));
}
std::uint32_t hash_of(std::u16string_view name) noexcept {
    return TextHash::of(name);
}

}  // namespace

template <typename Name>
const CustomFields::Frame* CustomFields::find_read(Name name) const {
    if (read_.size() <= kFewEntries) {
        const std::uint8_t initial = initial_of(name);
        for (const Frame& frame : read_) {
            // Nearly all others begin with something else.
            if (frame.front() == initial && has_name(frame, name)) {
                return &frame;
            }
        }
        return nullptr;
    }
    index_all();
    const std::size_t entry =
        index_.find(hash_of(name), [&](std::size_t e) { return has_name(read_[e], name); });
    return entry == HashIndex::kNotFound ? nullptr : &read_[entry];
}

void CustomFields::index_all() const {
    const auto hash = [this](std::size_t entry) { return hash_of(*name_of(read_[entry])); };
    for (; indexed_ < read_.size(); ++indexed_) {
        const std::optional<Bytes> added = name_of(read_[indexed_]);
        if (!added) {
            continue;
        }
        const auto is_same = [&](std::size_t entry) {
            const Bytes known = *name_of(read_[entry]);
            return std::equal(known.begin(), known.end(), added->begin(), added->end());
        };
        const std::uint32_t hash_of_added = hash_of(*added);
        if (index_.find(hash_of_added, is_same) == HashIndex::kNotFound) {
            index_.make_room(hash);
            index_.add(hash_of_added, indexed_);
        }
    }
}

void CustomFields::set(std::u16string_view name, std::u16string_view value) {
    set_.insert_or_assign(String(name), String(value));
}

void CustomFields::remove(std::u16string_view name) {
    if (const auto field = set_.find(name); field != set_.end()) {
        set_.erase(field);
    }
    std::erase_if(read_, [name](const Frame& frame) { return has_name(frame, name); });
    index_ = {};
    indexed_ = 0;
}

bool CustomFields::exists(std::u16string_view name) const {
    return (!set_.empty() && set_.find(name) != set_.end()) || find_read(name) != nullptr;
}

String CustomFields::text(std::u16string_view name) const {
    if (!set_.empty()) {
        if (const auto field = set_.find(name); field != set_.end()) {
            String text = field->second;
            std::erase(text, kSeparator);
            return text;
        }
    }
    const Frame* const frame = find_read(name);
    return frame == nullptr ? String() : widen(value_of(*frame, name.size()));
}

String CustomFields::text(std::string_view name) const {
    if (!set_.empty()) {
        return text(String(name.begin(), name.end()));
    }
    const Frame* const frame = find_read(name);
    return frame == nullptr ? String() : widen(value_of(*frame, name.size()));
}

}  // namespace brindle
