#include "output/tag_json.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <set>
#include <utility>

#include <brindle/genres.h>
#include <brindle/text.h>

#include "output/foreign_tags.h"
#include "output/stream_text.h"
#include "system/file_time.h"

namespace brindle::host {

namespace {

Json text_or_null(const std::optional<String>& text) {
    return text ? to_json(*text) : Json();
}

// The year of a recording time is its first four characters.
Json year(const TagFacts& facts) {
    constexpr std::size_t kYear = 4;
    if (const auto time = facts.text(u"TDRC")) {
        return to_json(time->substr(0, kYear));
    }
    return text_or_null(facts.text(u"TYER"));
}

// "(17)", "(17)Refinement", "17" and "Rock" are all in use.
Json genre(const TagFacts& facts) {
    const std::optional<String> text = facts.text(u"TCON");
    if (!text) {
        return {};
    }
    const std::string utf8 = to_utf8(*text);
    const std::string_view digits = std::string_view(utf8).substr(utf8.starts_with("(") ? 1 : 0);
    std::uint8_t number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    const bool is_number =
        error == std::errc() &&
        (utf8.starts_with("(") ? end != digits.data() + digits.size() && *end == ')'
                               : end == digits.data() + digits.size());
    Json object;
    object["text"] = utf8;
    object["number"] = is_number ? Json(number) : Json();
    object["name"] = is_number ? to_json(GenreName(number)) : Json();
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

}  // namespace

Json tag_object(const TagFacts& facts) {
    if (facts.version == 0) {
        return {};
    }
    Json tag;
    for (const TextKey& text : kTexts) {
        tag[text.key] = text_or_null(facts.text(text.id));
    }
    tag["year"] = year(facts);
    tag["genre"] = genre(facts);
    tag["comments"] = comments(facts);
    tag["custom"] = custom_fields(facts);
    tag["pictures"] = pictures(facts);
    return tag;
}

Json file_object(const std::string& name, std::int64_t size, const cMPEGHeader& header,
                 const TagFacts& facts) {
    constexpr std::int64_t kBitsPerKilobit = 1'000;
    constexpr std::int64_t kRecord = 128;
    const bool has_record = has_id3v1(header);
    const ForeignTags foreign = find_foreign_tags(name, size - (has_record ? kRecord : 0));
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
    object["size"] = size;
    const std::optional<std::string> modified = modification_time(name);
    object["modified"] = modified ? Json(*modified) : Json();
    object["tags"] = std::move(tags);
    object["bit_rate"] =
        has_stream(header) ? Json(kilobits_per_second(header) * kBitsPerKilobit) : Json();
    return object;
}

Json whole_file(const std::string& name, std::int64_t size, const cMPEGHeader& header,
                FrameValues values) {
    // A file that has gone since it was opened has no tag any more.
    TagFacts facts;
    try {
        facts = read_tag_facts(header);
    } catch (const Error&) {
        facts = {};
    }
    Json object = file_facts(header, values);
    object["schema"] = kJsonSchema;
    object["tag"] = tag_object(facts);
    object["file_facts"] = file_object(name, size, header, facts);
    return object;
}

}  // namespace brindle::host
