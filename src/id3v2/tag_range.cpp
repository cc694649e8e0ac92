#include "id3v2/tag_range.h"

#include <algorithm>
#include <cstdint>

#include "id3v2/public_tag_reader.h"
#include "id3v2/tag_area.h"
#include "id3v2/tag_search.h"

namespace brindle {

FoundTag find_tag_range(FileWindow& file, const std::optional<AcceptedFrame>& accepted) {
    const bool is_at_start = read_public_tag_header(file, 0).has_value();
    const std::optional<std::int32_t> host_position = find_tag(file);
    const std::optional<std::int64_t> position = is_at_start ? 0 : host_position;
    const TagArea area = find_tag_area(file, accepted, position);
    if (!area.position) {
        return {std::nullopt, host_position};
    }
    // Without audio, a tag that claims more than there is extends to the end of the file.
    const std::int64_t limit = area.audio ? *area.position + area.length : file.length();
    ByteRange range{*area.position, *area.position};
    while (range.end < limit) {
        const auto header = read_public_tag_header(file, range.end);
        if (!header) {
            break;
        }
        range.end = std::min(header->claimed_tag_end(), limit);
    }
    return {range, host_position};
}

}  // namespace brindle
