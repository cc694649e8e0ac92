#include "output/file_facts.h"

#include <iterator>
#include <utility>

#include <brindle/text.h>

#include "output/corrupt_tag.h"
#include "output/tag_frames.h"

namespace brindle::host {

namespace {

// One member of the interface. Its name is told apart from the assignment of the same name by type.
template <class T, T (cMPEGHeader::*Get)() const>
Json read(const cMPEGHeader& header) {
    return to_json((header.*Get)());
}

Json title(const cMPEGHeader& header) {
    return to_json(title_of(header));
}

Json artist(const cMPEGHeader& header) {
    return to_json(artist_of(header));
}

Json frame_ids(const cMPEGHeader& header) {
    Json ids = Json::array();
    for (const String& id : tag_frame_ids(header)) {
        ids.push_back(to_utf8(id));
    }
    return ids;
}

// A picture has its place in the file; here its size is enough.
Json tag_value(const String& id, const String& value) {
    if (is_picture(id)) {
        return Json{{"bytes", value.size()}};
    }
    return to_json(value);
}

Json frame_values(const cMPEGHeader& header) {
    // Appended without looking for the key: ids are unique, and a hostile tag has a million of
    // them.
    Json::object_t values;
    for (const String& id : tag_frame_ids(header)) {
        Json list = Json::array();
        const std::int32_t count = header.TagsInFrame(id);
        for (std::int32_t i = 1; i <= count; ++i) {
            list.push_back(tag_value(id, header.v2Tag(id, i)));
        }
        values.emplace_back(to_utf8(id), std::move(list));
    }
    return values;
}

struct Member {
    const char* name;
    Json (*read)(const cMPEGHeader& header);
};

constexpr Member kMembers[] = {
    {"MonoStereo", read<String, &cMPEGHeader::MonoStereo>},
    {"BitRate", read<std::int32_t, &cMPEGHeader::BitRate>},
    {"Speed", read<double, &cMPEGHeader::Speed>},
    {"Volume", read<std::int32_t, &cMPEGHeader::Volume>},
    {"Opener", read<std::int32_t, &cMPEGHeader::Opener>},
    {"CueInmSStart", read<std::int32_t, &cMPEGHeader::CueInmSStart>},
    {"CategoryLevel", read<String, &cMPEGHeader::CategoryLevel>},
    {"TagType", read<eTagType, &cMPEGHeader::TagType>},
    {"VBR", read<bool, &cMPEGHeader::VBR>},
    {"Layer", read<String, &cMPEGHeader::Layer>},
    {"Duration", read<std::int32_t, &cMPEGHeader::Duration>},
    {"Frequency", read<std::int32_t, &cMPEGHeader::Frequency>},
    {"FrameCount", read<std::int16_t, &cMPEGHeader::FrameCount>},
    {"Title", title},
    {"NoFade", read<std::int16_t, &cMPEGHeader::NoFade>},
    {"Composer", read<String, &cMPEGHeader::Composer>},
    {"Publisher", read<String, &cMPEGHeader::Publisher>},
    {"CopyRight", read<String, &cMPEGHeader::CopyRight>},
    {"Agency", read<String, &cMPEGHeader::Agency>},
    {"AccountExec", read<String, &cMPEGHeader::AccountExec>},
    {"URL", read<String, &cMPEGHeader::URL>},
    {"Copy", read<String, &cMPEGHeader::Copy>},
    {"Artist", artist},
    {"ArtistUrl", read<String, &cMPEGHeader::ArtistUrl>},
    {"Sectone", read<std::int32_t, &cMPEGHeader::Sectone>},
    {"Intro", read<std::int32_t, &cMPEGHeader::Intro>},
    {"Category", read<Variant, &cMPEGHeader::Category>},
    {"Album", read<String, &cMPEGHeader::Album>},
    {"Track", read<std::int16_t, &cMPEGHeader::Track>},
    {"Year", read<std::int16_t, &cMPEGHeader::Year>},
    {"Comments", read<String, &cMPEGHeader::Comments>},
    {"Endstyle", read<String, &cMPEGHeader::Endstyle>},
    {"OutromsStart", read<std::int32_t, &cMPEGHeader::OutromsStart>},
    {"Genre", read<String, &cMPEGHeader::Genre>},
    {"artistv1Tag", read<String, &cMPEGHeader::artistv1Tag>},
    {"Titlev1Tag", read<String, &cMPEGHeader::Titlev1Tag>},
    {"Yearv1Tag", read<std::int16_t, &cMPEGHeader::Yearv1Tag>},
    {"v2Frames", frame_ids},
    {"v2Tag", frame_values},
    {"Commentv1", read<String, &cMPEGHeader::Commentv1>},
    {"RepairRequired", read<bool, &cMPEGHeader::RepairRequired>},
    {"ID3TagSizeIncludingHeader", read<std::int32_t, &cMPEGHeader::ID3TagSizeIncludingHeader>},
    {"MpegVersion", read<String, &cMPEGHeader::MpegVersion>},
};

}  // namespace

Json file_facts(const cMPEGHeader& header, FrameValues values) {
    // Appended without looking for the key, as each is in the table once.
    Json::object_t facts;
    facts.reserve(std::size(kMembers));
    for (const Member& member : kMembers) {
        if (member.read != frame_values || values == FrameValues::Shown) {
            facts.emplace_back(member.name, member.read(header));
        }
    }
    return facts;
}

std::vector<std::string> fact_names() {
    std::vector<std::string> names;
    for (const Member& member : kMembers) {
        if (member.read != frame_values) {
            names.emplace_back(member.name);
        }
    }
    return names;
}

Json file_failure(const std::string& reason) {
    return Json{{"error", reason}};
}

}  // namespace brindle::host
