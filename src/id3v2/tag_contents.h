// The tag of one file in memory: its frames and what hosts read and set of them.
#pragma once

#include <cstdint>
#include <set>
#include <span>
#include <string_view>
#include <vector>

#include <brindle/values.h>

#include "id3v2/byte_arena.h"
#include "id3v2/custom_fields.h"
#include "id3v2/field_frame.h"
#include "id3v2/frame_store.h"
#include "id3v2/standard_fields.h"
#include "id3v2/tag_layout.h"

namespace brindle {

class TagContents {
    ByteArena bytes_;  // first: the texts below point into it

public:
    FrameStore frames;

    // --- For the reader.

    [[nodiscard]] ByteArena& bytes() noexcept { return bytes_; }
    // Files a frame under its id, and what is derived from it. `value` lies in bytes(); separators
    // that mean nothing are removed from it in place.
    void file(FrameId id, std::span<std::uint8_t> value);
    // True until anything was read or set.
    [[nodiscard]] bool is_new() const noexcept;
    // Lyrics and genre number outlive the file they were read from.
    void take_lasting(const TagContents& from);

    // --- Fields, as hosts read and set them. Setting one replaces its first frame.

    [[nodiscard]] String text(StandardField field) const { return fields_.get(field); }
    void set(StandardField field, const String& value);
    // A property answers so from now on; no frame changes.
    void set_answer(StandardField field, const String& value) {
        fields_.set(field, StoredText(value));
    }

    // The two halves of the content type frame; setting one keeps the other.
    [[nodiscard]] std::uint8_t genre() const noexcept { return genre_; }
    void set_genre(std::uint8_t value);
    void set_genre_name(const String& value);

    [[nodiscard]] const CustomFields& custom() const noexcept { return custom_; }
    // Adds a custom field or replaces it. The first one of a tag brings a stamp.
    void set_custom(const String& name, const String& value);
    // Each name once, in the order of the frames.
    [[nodiscard]] std::vector<CustomField> custom_fields() const;
    // All frames of a name, which is not empty.
    void remove_custom(const String& name);
    // The stamp that every saved tag bears.
    void set_saved_stamp();

    // --- Frames by hand.

    // Removes all values of an id, or the value of that number unless it is 0. Of user-defined
    // texts the one of that description is removed, and `number` receives its number, 0 when there
    // is none; without a description all of them are.
    void remove(const String& id, const String& description, std::int32_t& number);

    // What was set since the file was read, each id, and each name of user-defined text, once, as
    // it is now; with the stamp when there is any.
    [[nodiscard]] std::vector<EditedField> edited_fields() const;
    // The names of custom fields that were removed since then and not set again.
    [[nodiscard]] const std::set<String>& removed_custom_fields() const noexcept {
        return removed_;
    }
    // A value was removed and memory ran out before the new one stood in its place. Saved like
    // this the value would be missing in the file, too.
    [[nodiscard]] bool is_incomplete() const noexcept { return is_incomplete_; }

private:
    struct SetValue {
        String id;
        String custom_name;
        String held;
    };

    void file_standard(StandardField field, StoredText text);
    void replace(const String& id, const String& custom_name, const String& held);

    CustomFields custom_;
    StandardFieldTexts fields_;
    std::uint8_t genre_ = 0;
    std::vector<SetValue> set_values_;
    std::set<String> removed_;
    bool is_incomplete_ = false;
};

}  // namespace brindle
