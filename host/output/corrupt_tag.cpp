#include "output/corrupt_tag.h"

#include <string_view>

namespace brindle::host {

namespace {

constexpr std::u16string_view kStamp = u"Corrupt ID3v2 Tag";

}  // namespace

bool is_corrupt(const cMPEGHeader& header) {
    const String title = header.Title();
    const std::int32_t titles = header.TagsInFrame(u"TIT2");
    return title.starts_with(kStamp) && header.Artist().starts_with(kStamp) &&
           (titles == 0 || header.v2Tag(u"TIT2", titles) != title);
}

String title_of(const cMPEGHeader& header) {
    return is_corrupt(header) ? String(kStamp) : header.Title();
}

String artist_of(const cMPEGHeader& header) {
    return is_corrupt(header) ? String(kStamp) : header.Artist();
}

}  // namespace brindle::host
