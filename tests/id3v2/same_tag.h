// Where the tag reader and the reference disagree about a tag.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "id3v2/reference_tag.h"
#include "id3v2/walked_tag.h"

namespace brindle::test {

inline Frames frames_of(const ReferenceTag& reference) {
    Frames frames;
    for (const std::string& id : reference.FrameList) {
        std::vector<String> values;
        for (int n = 1; n <= reference.TagCounts.at(id); ++n) {
            values.push_back(widened(reference.TagValues.at(id + ":" + std::to_string(n))));
        }
        frames.emplace_back(widened(id), values);
    }
    return frames;
}

inline String field_of(const ReferenceTag& reference, const std::string& id) {
    if (id == "TCON" && reference.genre_name_of_table) {
        return GenreName(static_cast<std::uint8_t>(reference.genre_name_number));
    }
    const auto found = reference.cached.find(id);
    String text = found == reference.cached.end() ? String() : widened(found->second);
    if (id == "TIT2" || id == "TPE1" || id == "TALB" || id == "COMM") {
        std::erase(text, u'\0');
    }
    return text;
}

// What differs first; empty when all is the same.
inline std::string difference(const WalkedTag& tag, const ReferenceTag& reference) {
    if (int{tag.facts().version} != reference.version) {
        return "version";
    }
    if (long{tag.facts().size} != reference.tag_size) {
        return "size";
    }
    if (tag.facts().corrupt != reference.corrupt) {
        return "corrupt";
    }
    if (tag.facts().fault.has_value()) {
        return "fault";
    }
    if (tag.frames() != frames_of(reference)) {
        return "frames";
    }
    if (static_cast<std::size_t>(tag.contents().frames.value_count()) !=
        reference.TagValues.size()) {
        return "number of values";
    }
    for (const auto& [name, value] : reference.CustomFields) {
        if (tag.custom(widened(name)) != widened(value)) {
            return "custom field " + name;
        }
    }
    for (const StandardFieldRow& row : kStandardFields) {
        const std::string id(row.frame_id.begin(), row.frame_id.end());
        if (tag.field(row.field) != field_of(reference, id)) {
            return "standard field " + id;
        }
    }
    return int{tag.contents().genre()} == reference.genre ? "" : "genre";
}

}  // namespace brindle::test
