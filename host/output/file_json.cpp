#include "output/file_json.h"

#include <optional>
#include <set>
#include <utility>

#include <nlohmann/json.hpp>

#include <brindle/genres.h>
#include <brindle/tag_facts.h>
#include <brindle/text.h>

#include "fields.h"
#include "output/foreign_tags.h"
#include "output/json_values.h"
#include "output/stream_text.h"
#include "output/tag_reading.h"
#include "system/utc_text.h"

namespace brindle::host {

namespace {

// The version of the objects below.
constexpr int kJsonSchema = 2;

// --- What hosts read, under the names of the automation interface

Json frame_ids(const cMPEGHeader& header) {
    Json ids = Json::array();
    for (const String& id : tag_frame_ids(header)) {
        ids.push_back(to_utf8(id));
    }
    return ids;
}

// A picture has its place in the file; here its size is enough.
Json frame_value(const String& id, const String& value) {
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
            list.push_back(frame_value(id, header.v2Tag(id, i)));
        }
        values.emplace_back(to_utf8(id), std::move(list));
    }
    return values;
}

Json field_json(const Field& field, const cMPEGHeader& header) {
    switch (field.access.type) {
        case FieldType::FrameIds:
            return frame_ids(header);
        case FieldType::FrameValues:
            return frame_values(header);
        default:
            return to_json(field.access.get(header));
    }
}

Json hosts_object(const cMPEGHeader& header, FrameValues values) {
    // Appended without looking for the key, as each is in the table once.
    Json::object_t object;
    for (const Field* field : fields_by_place()) {
        if (field->access.type != FieldType::FrameValues || values == FrameValues::Shown) {
            object.emplace_back(field->key, field_json(*field, header));
        }
    }
    return object;
}

// --- "tag": texts by the public documents

Json text_or_null(const std::optional<String>& text) {
    return text ? to_json(*text) : Json();
}

Json genre(const TagFacts& facts) {
    const std::optional<TagGenre> genre = tag_genre(facts);
    if (!genre) {
        return {};
    }
    Json object;
    object["text"] = to_json(genre->text);
    object["number"] = genre->number ? Json(*genre->number) : Json();
    object["name"] = genre->number ? to_json(GenreName(*genre->number)) : Json();
    return object;
}

Json comments(const TagFacts& facts) {
    Json list = Json::array();
    for (const TagText& text : facts.texts) {
        if (text.id == u"COMM") {
            Json comment;
            comment["text"] = to_json(text.text());
            comment["language"] = to_json(text.language);
            comment["description"] = to_json(text.description);
            list.push_back(std::move(comment));
        }
    }
    return list;
}

// Of several fields of one name the first.
Json custom_fields(const TagFacts& facts) {
    // Appended without looking for the key: a hostile tag has a hundred thousand of them.
    Json::object_t fields;
    std::set<String> names;
    for (const TagText& text : facts.texts) {
        if (text.id == u"TXXX" && names.insert(text.description).second) {
            fields.emplace_back(to_utf8(text.description), to_json(text.text()));
        }
    }
    return fields;
}

Json pictures(const TagFacts& facts) {
    Json list = Json::array();
    for (const TagPicture& picture : facts.pictures) {
        Json object;
        object["type"] = picture.type;
        object["mime_type"] = to_json(picture.mime_type);
        object["description"] = to_json(picture.description);
        object["bytes"] = picture.size;
        object["width"] = picture.width != 0 ? Json(picture.width) : Json();
        object["height"] = picture.height != 0 ? Json(picture.height) : Json();
        list.push_back(std::move(object));
    }
    return list;
}

struct TextKey {
    const char* key;
    const char16_t* id;
};
constexpr TextKey kTexts[] = {
    {"title", u"TIT2"},      {"artist", u"TPE1"},       {"album", u"TALB"},
    {"track", u"TRCK"},      {"composer", u"TCOM"},     {"publisher", u"TPUB"},
    {"copyright", u"TCOP"},  {"album_artist", u"TPE2"}, {"disc", u"TPOS"},
    {"encoded_by", u"TENC"}, {"url", u"WOAR"},          {"lyrics", u"USLT"},
};

// null without a tag.
Json tag_object(const TagFacts& facts) {
    if (facts.version == 0) {
        return {};
    }
    Json tag;
    for (const TextKey& text : kTexts) {
        tag[text.key] = text_or_null(facts.text(text.id));
    }
    tag["year"] = text_or_null(tag_year(facts));
    tag["genre"] = genre(facts);
    tag["comments"] = comments(facts);
    tag["custom"] = custom_fields(facts);
    tag["pictures"] = pictures(facts);
    return tag;
}

// --- "file_facts": size, time and tags of the file, and the bit rate in bit/s

Json file_object(InputFile& file, const TagFacts& facts) {
    constexpr std::int64_t kBitsPerKilobit = 1'000;
    constexpr std::int64_t kRecord = 128;
    const cMPEGHeader& header = file.header();
    const bool has_record = has_id3v1(header);
    const ForeignTags foreign = find_foreign_tags(file, file.size() - (has_record ? kRecord : 0));
    Json tags = Json::array();
    const auto add = [&](const std::string& kind, std::int64_t bytes) {
        Json tag;
        tag["kind"] = kind;
        tag["bytes"] = bytes;
        tags.push_back(std::move(tag));
    };
    if (facts.version != 0) {
        add("ID3v2." + std::to_string(facts.version), facts.tag_bytes);
    }
    if (foreign.lyrics3_bytes != 0) {
        add("Lyrics3", foreign.lyrics3_bytes);
    }
    if (foreign.ape_bytes != 0) {
        add("APEv2", foreign.ape_bytes);
    }
    if (has_record) {
        add("ID3v1", kRecord);
    }
    Json object;
    object["size"] = file.size();
    object["modified"] = utc_text(file.modified());
    object["tags"] = std::move(tags);
    object["bit_rate"] =
        has_stream(header) ? Json(kilobits_per_second(header) * kBitsPerKilobit) : Json();
    return object;
}

}  // namespace

Json file_json(InputFile& file, FrameValues values, const std::optional<std::string>& audio_hash) {
    const TagFacts& facts = file.facts();
    Json object = hosts_object(file.header(), values);
    object["schema"] = kJsonSchema;
    object["tag"] = tag_object(facts);
    object["file_facts"] = file_object(file, facts);
    if (audio_hash) {
        object["file_facts"]["audio_sha256"] = audio_hash->empty() ? Json() : Json(*audio_hash);
    }
    return object;
}

std::string file_json_line(InputFile& file, FrameValues values,
                           const std::optional<std::string>& audio_hash) {
    return json_line(file.name(), file_json(file, values, audio_hash));
}

std::string failure_json_line(const std::string& name, const std::string& reason) {
    return json_line(name, Json{{"error", reason}});
}

}  // namespace brindle::host
