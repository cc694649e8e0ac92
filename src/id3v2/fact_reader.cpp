#include "id3v2/fact_reader.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <utility>

#include "id3v2/frame_fields.h"
#include "id3v2/frame_text.h"
#include "id3v2/image_size.h"
#include "id3v2/imported_frame.h"
#include "id3v2/public_tag_reader.h"
#include "id3v2/tag_layout.h"
#include "id3v2/text_encoding.h"
#include "util/file_content.h"
#include "util/window_file.h"

namespace brindle {

namespace {

using Bytes = std::span<const std::uint8_t>;

class FactReader {
public:
    FactReader(FileWindow& window, TagFacts& facts) : file_(window), facts_(facts) {}

    void take(const PublicFrame& source, std::uint8_t version) {
        const std::optional<ImportedFrame> frame =
            source.is_whole ? import_frame(file_, version, source) : std::nullopt;
        if (!frame || frame->is_packed) {
            return;
        }
        if (frame->id() == "APIC") {
            take_picture(*frame);
        } else if (is_link(frame->id())) {
            take_link(*frame);
        } else if (holds_text(frame->id())) {
            take_text(*frame);
        }
    }

private:
    void take_text(const ImportedFrame& frame) {
        const std::vector<std::uint8_t> content = frame.head(kMaxBodyInMemory);
        FrameText read(frame.id(), content);
        facts_.texts.push_back({text_of_id(frame.id()), std::move(read.language),
                                read.strings.empty() ? String() : std::move(read.strings.front()),
                                std::move(read.values)});
    }

    void take_link(const ImportedFrame& frame) {
        const std::vector<std::uint8_t> content = frame.head(kMaxBodyInMemory);
        const std::size_t length = string_length(TextEncoding::Latin1, content);
        facts_.texts.push_back(
            {text_of_id(frame.id()), {}, {}, {from_latin1(Bytes(content).first(length))}});
    }

    void take_picture(const ImportedFrame& frame) {
        constexpr std::size_t kMaxHead = 4'096;  // type and description come first
        constexpr std::size_t kFirstBytes = 16;
        const std::vector<std::uint8_t> content = frame.head(kMaxHead);
        FrameText read(frame.id(), content);
        const ByteRange image{frame.prefix + static_cast<std::int64_t>(read.data_begin),
                              frame.body.size()};
        ContentFile body(frame.body);
        const Bytes held = Bytes(content).subspan(read.data_begin);
        const ImageSize size = read_image_size(body, image, held).value_or(ImageSize());
        const Bytes first_bytes = held.first(std::min(held.size(), kFirstBytes));
        facts_.pictures.push_back({read.type,
                                   std::move(read.latin1_strings.front()),
                                   std::move(read.strings.front()),
                                   image.length(),
                                   size.width,
                                   size.height,
                                   {first_bytes.begin(), first_bytes.end()}});
    }

    WindowFile file_;
    TagFacts& facts_;
};

}  // namespace

TagFacts read_facts(FileWindow& window, const ByteRange& range) {
    return read_facts(window, range, read_public_tags(window, range));
}

TagFacts read_facts(FileWindow& window, const ByteRange& range, std::span<const PublicTag> tags) {
    TagFacts facts;
    facts.tag_bytes = range.length();
    FactReader reader(window, facts);
    for (const PublicTag& tag : tags) {
        if (facts.version == 0) {
            facts.version = tag.version;
        }
        for (const PublicFrame& frame : tag.frames) {
            reader.take(frame, tag.version);
        }
    }
    return facts;
}

}  // namespace brindle
