#include "commands/check_tags.h"

#include <algorithm>
#include <array>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include <brindle/text.h>

#include "commands/misread_code_page.h"
#include "commands/misread_frames.h"
#include "output/foreign_tags.h"
#include "output/printable_text.h"
#include "output/stream_text.h"
#include "output/tag_reading.h"

namespace brindle::host {

namespace {

using Findings = std::vector<Finding>;

bool is_tag_header(std::string_view bytes) {
    constexpr std::size_t kVersion = 3;
    return bytes.size() > kVersion && bytes.starts_with("ID3") && bytes[kVersion] >= 2 &&
           bytes[kVersion] <= 4;
}

bool is_blank(const String& text) {
    return text.find_first_not_of(u" \t\r\n") == String::npos;
}

// --- the ID3v2 tag as a whole

void check_size(CheckedFile& file, Findings& findings) {
    constexpr std::size_t kTagHeader = 10;
    const cMPEGHeader& header = file.header;
    const std::int32_t tag_size = header.ID3TagSizeIncludingHeader();
    // If audio directly follows the tag, there is no second one.
    if (has_id3v2(header) && (header.RepairRequired() || !has_stream(header)) &&
        is_tag_header(file.bytes.read(tag_size, kTagHeader))) {
        findings.push_back(
            {Reason::DuplicateTag, "a second ID3v2 tag at byte " + std::to_string(tag_size)});
    }
    if (tag_size > file.size) {
        findings.push_back(
            {Reason::TagLargerThanFile, "the ID3v2 tag claims " + std::to_string(tag_size) +
                                            " bytes of a file of " + std::to_string(file.size)});
    }
    if (is_corrupt(header)) {
        findings.push_back({Reason::CorruptTag, "hosts can't read the ID3v2 tag to its end"});
    }
}

void check_names(const CheckedFile& file, Findings& findings) {
    const auto lacks = [&](const char16_t* id, const String& of_record) {
        return is_blank(file.facts.text(id).value_or(String())) && is_blank(of_record);
    };
    if (lacks(u"TIT2", file.header.Titlev1Tag())) {
        findings.push_back({Reason::NoTitle, "no title"});
    }
    if (lacks(u"TPE1", file.header.artistv1Tag())) {
        findings.push_back({Reason::NoArtist, "no artist"});
    }
}

void check_frames_of_tag(const CheckedFile& file, Findings& findings) {
    if (file.hosts_read_the_same) {
        return;
    }
    const auto add = [&](Reason reason, const std::string& what,
                         const std::vector<std::string>& labels) {
        if (!labels.empty()) {
            findings.push_back({reason, what + comma_list(labels, std::identity())});
        }
    };
    const MisreadFrames frames = find_misread_frames(file.header);
    add(Reason::MisreadText, "hosts read another text: ", frames.misread_texts);
    add(Reason::UnreadText, "hosts do not read ", frames.unread_texts);
    add(Reason::LargePicture, "hosts do not read ", frames.large_pictures);
}

// --- texts

void add_mojibake(const std::string& label, const String& text, std::vector<std::string>& labels) {
    if (const auto misread = find_misread_encoding(text)) {
        labels.push_back(label + (misread->encoding == MeantEncoding::Utf8
                                      ? " means " + in_quotes(misread->meant)
                                      : " is Cyrillic or Greek text"));
    }
}

void check_mojibake(const CheckedFile& file, Findings& findings) {
    std::vector<std::string> labels;
    for (const TagText& text : file.facts.texts) {
        // Addresses are ASCII.
        if (!text.id.starts_with(u'W')) {
            const std::string name =
                text.description.empty() ? "" : " " + in_quotes(text.description);
            add_mojibake(printable(text.id) + name, text.text(), labels);
        }
    }
    if (is_blank(file.facts.text(u"TIT2").value_or(String()))) {
        add_mojibake("the title of the ID3v1 record", file.header.Titlev1Tag(), labels);
    }
    if (is_blank(file.facts.text(u"TPE1").value_or(String()))) {
        add_mojibake("the artist of the ID3v1 record", file.header.artistv1Tag(), labels);
    }
    if (!labels.empty()) {
        findings.push_back({Reason::Mojibake,
                            "read in the wrong encoding: " + comma_list(labels, std::identity())});
    }
}

// --- the record against the tag

struct RecordField {
    const char* name;
    std::size_t offset;
    std::size_t length;
};

constexpr std::array<RecordField, 4> kRecordFields{
    {{"title", 3, 30}, {"artist", 33, 30}, {"album", 63, 30}, {"year", 93, 4}}};

std::string_view without_padding(std::string_view field) {
    field = field.substr(0, field.find('\0'));
    const std::size_t last = field.find_last_not_of(' ');
    return field.substr(0, last == std::string_view::npos ? 0 : last + 1);
}

// The characters that taggers write for one that the code page lacks.
bool is_written_for(char16_t unit, char byte) {
    constexpr char16_t kBytes = 0x100;
    constexpr char16_t kHigh = 0x80;
    const auto code = static_cast<std::uint8_t>(byte);
    return unit >= kBytes || unit == code || (unit >= kHigh && byte == '?');
}

// Whether a field of the record can have been made from a text, cut to the field's length: in the
// code page as far as that has its characters, or in UTF-8, as some taggers write it.
bool may_be_made_from(const String& text, std::string_view field, std::size_t length) {
    if (without_padding(to_utf8(text).substr(0, length)) == field) {
        return true;
    }
    String start = text.substr(0, length);
    std::size_t known = 0;
    while (known < start.size() && fits_code_page(start.substr(known, 1))) {
        ++known;
    }
    const bool is_whole = known == start.size();
    start.resize(is_whole ? start.find_last_not_of(u' ') + 1 : known);
    return (is_whole ? start.size() == field.size() : start.size() <= field.size()) &&
           std::equal(start.begin(), start.end(), field.begin(), is_written_for);
}

void check_agreement(CheckedFile& file, Findings& findings) {
    if (!has_id3v1(file.header) || file.facts.version == 0) {
        return;
    }
    const std::string record = file.bytes.read(file.size - kId3v1Bytes, kId3v1Bytes);
    const std::array<std::optional<String>, kRecordFields.size()> texts{
        file.facts.text(u"TIT2"), file.facts.text(u"TPE1"), file.facts.text(u"TALB"),
        tag_year(file.facts)};
    std::vector<std::string> names;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        const RecordField& place = kRecordFields.at(i);
        const std::string_view field = without_padding(
            std::string_view(record).substr(std::min(place.offset, record.size()), place.length));
        if (!texts.at(i) || is_blank(*texts.at(i)) || field.empty()) {
            continue;
        }
        const String& text = *texts.at(i);
        // If there are several values, some taggers write the first.
        const String first = text.substr(0, text.find(u'/'));
        if (!may_be_made_from(text, field, place.length) &&
            !may_be_made_from(first, field, place.length)) {
            names.emplace_back(place.name);
        }
    }
    if (!names.empty()) {
        findings.push_back({Reason::TagsDisagree,
                            "ID3v1 and ID3v2 differ in " + comma_list(names, std::identity())});
    }
}

// --- pictures

bool is_image(std::string_view bytes) {
    using namespace std::string_view_literals;
    constexpr std::array kBeginnings{
        "\xFF\xD8"sv,  // JPEG
        "\x89PNG"sv,
        "GIF8"sv,
        "BM"sv,     // BMP
        "II*\0"sv,  // TIFF
        "MM\0*"sv,
        "\0\0\1\0"sv,  // icon
        "<svg"sv,
        "<?xml"sv,
        "\0\0\0\x0CJXL "sv,  // JPEG XL
        "\xFF\x0A"sv,
        "\0\0\0\x0CjP  "sv,  // JPEG 2000
    };
    constexpr std::size_t kRiffFormat = 8;
    constexpr std::size_t kBoxType = 4;
    return std::any_of(kBeginnings.begin(), kBeginnings.end(),
                       [&](std::string_view one) { return bytes.starts_with(one); }) ||
           (bytes.starts_with("RIFF") && bytes.substr(kBoxType).size() > kBoxType &&
            bytes.substr(kRiffFormat).starts_with("WEBP")) ||
           // AVIF and HEIF
           (bytes.size() > kBoxType && bytes.substr(kBoxType).starts_with("ftyp"));
}

void check_pictures(const TagFacts& facts, Findings& findings) {
    constexpr std::u16string_view kLink = u"-->";
    int number = 0;
    std::vector<std::string> labels;
    for (const TagPicture& picture : facts.pictures) {
        ++number;
        const std::string_view first(reinterpret_cast<const char*>(picture.first_bytes.data()),
                                     picture.first_bytes.size());
        if (picture.mime_type != kLink && !is_image(first)) {
            labels.push_back("APIC:" + std::to_string(number));
        }
    }
    if (!labels.empty()) {
        findings.push_back({Reason::BadPicture, "not an image by its first bytes: " +
                                                    comma_list(labels, std::identity())});
    }
}

}  // namespace

std::int64_t check_tags_at_end(CheckedFile& file, Findings& findings) {
    std::int64_t end = file.size;
    if (has_id3v1(file.header)) {
        end -= kId3v1Bytes;
        if (end >= kId3v1Bytes && file.bytes.read(end - kId3v1Bytes, 3) == "TAG") {
            end -= kId3v1Bytes;
            findings.push_back(
                {Reason::SecondRecord, "a second ID3v1 record at byte " + std::to_string(end)});
        }
    }
    const ForeignTags foreign = find_foreign_tags(file.bytes, end);
    const auto bytes_text = [](std::int64_t bytes) { return std::to_string(bytes) + " bytes"; };
    if (foreign.ape_bytes != 0) {
        findings.push_back({Reason::ApeTag, "an APEv2 tag of " + bytes_text(foreign.ape_bytes)});
    }
    if (foreign.lyrics3_bytes != 0) {
        findings.push_back(
            {Reason::Lyrics3Tag, "a Lyrics3 tag of " + bytes_text(foreign.lyrics3_bytes)});
    }
    return end - foreign.ape_bytes - foreign.lyrics3_bytes;
}

void check_tags(CheckedFile& file, Findings& findings) {
    check_size(file, findings);
    check_names(file, findings);
    check_frames_of_tag(file, findings);
    check_mojibake(file, findings);
    check_agreement(file, findings);
    check_pictures(file.facts, findings);
}

}  // namespace brindle::host
