#include "output/tag_frames.h"

#include <cstdint>

namespace brindle::host {

std::vector<String> tag_frame_ids(const cMPEGHeader& header) {
    std::vector<String> ids;
    if (const auto frames = header.v2Frames()) {
        const std::int32_t count = frames->Count();
        for (std::int32_t position = 1; position <= count; ++position) {
            ids.push_back(std::get<String>(frames->Item(position)));
        }
    }
    return ids;
}

bool is_picture(const String& frame_id) {
    return frame_id == u"APIC";
}

}  // namespace brindle::host
