#include "id3v2/tag_builder.h"

#include <iterator>
#include <span>
#include <string_view>
#include <utility>

#include "id3v2/tag_layout.h"
#include "util/code_page.h"
#include "util/numeric_text.h"

namespace brindle {

namespace {

constexpr std::uint8_t kLatin1Encoding = 0;
// Readers stop at an id of zeros; it is there even when the tag fills its area to the brim.
constexpr std::size_t kEndMark = 4;

constexpr std::u16string_view kPictureId = u"APIC";
constexpr std::u16string_view kTagIdentifierText = u"ID3";

// TXXX values count up to the first empty one; of other ids all that were counted.
std::int32_t values_to_write(const FrameValues& values, const String& id) {
    const std::int32_t count = values.count().value_or(0);
    if (id != kCustomFrame) {
        return count;
    }
    std::int32_t filled = 0;
    const StoredText* value = values.find(1);
    while (value != nullptr && !value->empty()) {
        ++filled;
        value = values.find(filled + 1);
    }
    return filled != 0 ? filled : count;
}

// Four characters, cut or filled with NULs.
void append_id(const String& id, std::vector<std::uint8_t>& tag) {
    for (std::size_t i = 0; i < kFrameLayout.id_width; ++i) {
        tag.push_back(i < id.size() ? narrow(id[i]) : std::uint8_t{0});
    }
}

// A value without an entry is written empty: its successors keep their numbers.
void append_frame(const String& id, const StoredText* value, std::vector<std::uint8_t>& tag) {
    const std::size_t header = tag.size();
    append_id(id, tag);
    tag.resize(header + kFrameLayout.header_size);
    const std::size_t body = tag.size();
    if (id != kPictureId) {
        tag.push_back(kLatin1Encoding);
    }
    if (value != nullptr) {
        value->append_to(tag);
    }
    encode_number(tag.size() - body, kPlainShift,
                  std::span(tag).subspan(header + kFrameLayout.id_width, kFrameLayout.size_width));
}

std::vector<std::uint8_t> tag_header() {
    std::vector<std::uint8_t> header(std::begin(kTagIdentifier), std::end(kTagIdentifier));
    header.push_back(kWrittenVersion);
    header.resize(kTagHeaderSize);
    return header;
}

void set_size(std::span<std::uint8_t> header, std::uint64_t area) {
    encode_number(area - kTagHeaderSize, kSyncsafeShift,
                  header.subspan(kTagSizeOffset, kTagSizeWidth));
}

}  // namespace

std::vector<std::uint8_t> build_tag(const FrameStore& frames) {
    std::vector<std::uint8_t> tag = tag_header();
    const KeyedCollection& list = *frames.frame_list();
    for (std::int32_t position = 1; position <= list.Count(); ++position) {
        const String id = to_text(list.Item(position));
        if (id.find(kTagIdentifierText) != String::npos) {
            continue;
        }
        const FrameValues* const values = frames.values(id);
        if (values == nullptr) {
            continue;
        }
        const std::int32_t count = values_to_write(*values, id);
        for (std::int32_t number = 1; number <= count; ++number) {
            append_frame(id, values->find(number), tag);
        }
    }
    tag.resize(tag.size() + kEndMark);
    return tag;
}

FileContent tag_of(const FileContent& frames) {
    FileContent tag;
    tag.append_owned(tag_header());
    tag.append(frames);
    tag.append_zeros(kEndMark);
    return tag;
}

void fit_tag(std::vector<std::uint8_t>& tag, std::size_t area) {
    tag.resize(area);
    set_size(tag, area);
}

FileContent fitted_tag(const FileContent& tag, std::int64_t area) {
    constexpr std::int64_t kMaxInMemory = std::int64_t{64} * 1024;
    FileContent fitted;
    if (area <= kMaxInMemory) {
        std::vector<std::uint8_t> bytes = tag.read_all();
        fit_tag(bytes, static_cast<std::size_t>(area));
        fitted.append_owned(std::move(bytes));
        return fitted;
    }
    std::vector<std::uint8_t> header = tag_header();
    set_size(header, static_cast<std::uint64_t>(area));
    fitted.append_owned(std::move(header));
    fitted.append(tag, {static_cast<std::int64_t>(kTagHeaderSize), tag.size()});
    fitted.append_zeros(area - tag.size());
    return fitted;
}

}  // namespace brindle
