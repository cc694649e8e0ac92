// A tag that the reader has gone through, and what it made of it.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include <brindle/values.h>

#include "id3v2/tag_contents.h"
#include "id3v2/tag_reader.h"
#include "support/bytes.h"
#include "support/memory_files.h"
#include "util/code_page.h"
#include "util/file_window.h"
#include "util/numeric_text.h"

namespace brindle::test {

// The content of a frame store: each id in its order, with its values 1, 2, 3 ... as counted.
using Frames = std::vector<std::pair<String, std::vector<String>>>;

inline Frames frames_of(const FrameStore& store) {
    Frames frames;
    const auto& list = store.frame_list();
    for (std::int32_t place = 1; place <= list->Count(); ++place) {
        const String id = to_text(list->Item(place));
        std::vector<String> values;
        for (std::int32_t index = 1; index <= store.count(id).value_or(0); ++index) {
            const StoredText* value = store.value(id, index);
            values.push_back(value == nullptr ? u"(missing)" : value->wide());
        }
        frames.emplace_back(id, std::move(values));
    }
    return frames;
}

// Bytes as the text that a host sees.
inline String widened(std::string_view bytes) {
    String text;
    for (const char byte : bytes) {
        text.push_back(widen(static_cast<std::uint8_t>(byte)));
    }
    return text;
}

class WalkedTag {
public:
    explicit WalkedTag(const Bytes& file, std::int64_t position = 0) {
        files_.put(kName, file);
        file_ = files_.open(kName, OpenMode::Read);
        FileWindow window(*file_);
        facts_ = TagReader(window, contents_).read(position);
    }

    [[nodiscard]] const TagReading& facts() const { return facts_; }
    [[nodiscard]] const TagContents& contents() const { return contents_; }
    [[nodiscard]] Frames frames() const { return frames_of(contents_.frames); }
    [[nodiscard]] String field(StandardField field) const { return contents_.text(field); }
    [[nodiscard]] String custom(std::u16string_view name) const {
        return contents_.custom().exists(name) ? contents_.custom().text(name) : u"(absent)";
    }

private:
    static constexpr const char16_t* kName = u"tag.mp3";

    MemoryFiles files_;
    std::unique_ptr<BinaryFile> file_;
    TagContents contents_;
    TagReading facts_;
};

}  // namespace brindle::test
