#include "id3v2/reading_comparison.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <utility>
#include <vector>

#include "id3v2/frame_form.h"
#include "id3v2/stored_text.h"
#include "id3v2/tag_layout.h"
#include "util/code_page.h"

namespace brindle {

namespace {

class ReadingComparison {
public:
    ReadingComparison(FileWindow& file, const FrameStore& read_by_hosts)
        : file_(file), read_by_hosts_(read_by_hosts) {}

    // The next frame of the tag.
    [[nodiscard]] bool is_read(const PublicFrame& frame) {
        if (frame.size == 0) {
            return true;  // no frame at all
        }
        const FrameId id = frame_id(frame.id());
        const std::int32_t number = ++counts_[id];
        if (id == kPictureFrameId) {
            return std::cmp_less_equal(frame.size, kLargestPictureSize);
        }
        return !is_text_frame(frame.id()) ||
               (!frame.is_packed &&
                is_read(frame, read_by_hosts_.value(text_of_id(frame.id()), number)));
    }

private:
    bool is_read(const PublicFrame& frame, const StoredText* read) {
        if (read == nullptr) {
            return false;
        }
        const std::vector<std::uint8_t> content = read_content(file_, frame, kLargestTextSize + 1);
        std::vector<std::uint8_t> text;
        read->append_to(text);
        constexpr std::uint8_t kLatin1 = 0;
        if (!content.empty() && content.front() == kLatin1 &&
            std::equal(content.begin() + 1, content.end(), text.begin(), text.end())) {
            return true;
        }
        String shown = widen(text);
        std::erase(shown, u'\0');
        return content.size() <= kLargestTextSize && text_of_frame(frame.id(), content) == shown;
    }

    FileWindow& file_;
    const FrameStore& read_by_hosts_;
    std::map<FrameId, std::int32_t> counts_;
};

// Both find a tag at the same place, and it ends where it says.
bool is_found_alike(FileWindow& file, const FoundTag& found) {
    if (!found.range || !found.host_position) {
        return !found.range && !found.host_position && !read_public_tag_header(file, 0);
    }
    std::int64_t end = *found.host_position;
    while (const auto header = read_public_tag_header(file, end)) {
        end = header->claimed_tag_end();
    }
    return found.range->begin == *found.host_position && found.range->end == end;
}

}  // namespace

bool hosts_read_the_same(FileWindow& file, const FoundTag& found,
                         std::span<const PublicTag> tags_in_range,
                         const FrameStore& read_by_hosts) {
    ReadingComparison comparison(file, read_by_hosts);
    const auto is_read = [&](const PublicFrame& frame) { return comparison.is_read(frame); };
    return is_found_alike(file, found) &&
           std::all_of(tags_in_range.begin(), tags_in_range.end(), [&](const PublicTag& tag) {
               return tag.version != kOldestVersion &&
                      std::all_of(tag.frames.begin(), tag.frames.end(), is_read);
           });
}

}  // namespace brindle
