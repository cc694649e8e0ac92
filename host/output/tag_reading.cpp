#include "output/tag_reading.h"

#include <charconv>
#include <string>

#include <brindle/text.h>

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

bool is_stamp(std::string_view text) {
    return from_utf8(text) == kStamp;
}

String title_of(const cMPEGHeader& header) {
    return is_corrupt(header) ? String(kStamp) : header.Title();
}

String artist_of(const cMPEGHeader& header) {
    return is_corrupt(header) ? String(kStamp) : header.Artist();
}

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

std::optional<String> tag_year(const TagFacts& facts) {
    constexpr std::size_t kYear = 4;
    if (const auto time = facts.text(u"TDRC")) {
        return time->substr(0, kYear);
    }
    return facts.text(u"TYER");
}

std::optional<TagGenre> tag_genre(const TagFacts& facts) {
    const std::optional<String> text = facts.text(u"TCON");
    if (!text) {
        return std::nullopt;
    }
    const std::size_t end = text->find(u')');
    const bool is_in_parentheses = end != String::npos && text->front() == u'(';
    TagGenre genre{*text, is_in_parentheses ? text->substr(1, end - 1) : *text, std::nullopt};
    const std::string digits = to_utf8(genre.code);
    std::uint8_t number = 0;
    const auto [last, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (error == std::errc() && last == digits.data() + digits.size()) {
        genre.number = number;
    }
    return genre;
}

std::optional<String> tag_text(const TagFacts& facts, std::u16string_view frame_id) {
    if (frame_id == u"TYER") {
        return tag_year(facts);
    }
    if (frame_id == u"TCON") {
        const std::optional<TagGenre> genre = tag_genre(facts);
        return genre ? std::optional(genre->code) : std::nullopt;
    }
    return frame_id == u"COMM" ? facts.comment() : facts.text(frame_id);
}

}  // namespace brindle::host
