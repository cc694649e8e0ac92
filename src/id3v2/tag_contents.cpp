#include "id3v2/tag_contents.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "id3v2/content_type.h"
#include "util/find_byte.h"

namespace brindle {

namespace {

std::span<std::uint8_t> without_nuls(std::span<std::uint8_t> bytes) {
    const std::size_t first = find_byte(bytes, 0);
    if (first == bytes.size()) {
        return bytes;
    }
    const auto end = std::remove(bytes.begin() + static_cast<std::ptrdiff_t>(first), bytes.end(),
                                 std::uint8_t{0});
    return bytes.first(static_cast<std::size_t>(end - bytes.begin()));
}

// Finds the field of a frame by the id as it stands in a file. A tag can hold a hundred thousand
// frames, so each id has a slot of its own, found with one multiplication.
class StandardIds {
public:
    constexpr StandardIds() {
        while (!place_all()) {
            multiplier_ += 2;
        }
    }

    [[nodiscard]] constexpr const StandardField* find(FrameId id) const noexcept {
        const Entry& entry = entries_[slot_of(id)];
        return entry.id == id ? &entry.field : nullptr;
    }

private:
    struct Entry {
        FrameId id = kNoFrameId;
        StandardField field{};
    };
    static constexpr unsigned kSlotBits = 6;

    [[nodiscard]] constexpr std::size_t slot_of(FrameId id) const noexcept {
        return (static_cast<std::uint32_t>(id) * multiplier_) >> (32U - kSlotBits);
    }
    constexpr bool place_all() {
        entries_ = {};
        for (const StandardFieldRow& row : kStandardFields) {
            std::array<char, kFrameLayout.id_width> characters{};
            std::transform(row.frame_id.begin(), row.frame_id.end(), characters.begin(),
                           [](char16_t unit) { return static_cast<char>(unit); });
            const FrameId id = frame_id({characters.data(), characters.size()});
            Entry& entry = entries_[slot_of(id)];
            if (entry.id != kNoFrameId) {
                return false;
            }
            entry = {id, row.field};
        }
        return true;
    }

    std::uint32_t multiplier_ = 0x9E37'79B1;
    std::array<Entry, std::size_t{1} << kSlotBits> entries_{};
};
constexpr StandardIds kStandardIds;

}  // namespace

void TagContents::file(FrameId id, std::span<std::uint8_t> value) {
    if (id == kCustomFrameId) {
        frames.append(id, value);
        custom.read(value);
        return;
    }
    if (id != kPictureFrameId) {
        value = without_nuls(value);
    }
    frames.append(id, value);
    const StandardField* const field = kStandardIds.find(id);
    if (field != nullptr && id != kNoFrameId) {
        file_standard(*field, StoredText::in_file(value));
    }
}

void TagContents::file_standard(StandardField field, StoredText text) {
    switch (field) {
        case StandardField::Comment:
            fields.add_comment(std::move(text));
            break;
        case StandardField::OtherGenreName: {
            ContentType type = read_content_type(text);
            genre = type.number.value_or(genre);
            fields.set(StandardField::OtherGenreName, std::move(type.name));
            break;
        }
        default:
            fields.set(field, std::move(text));
    }
}

}  // namespace brindle
