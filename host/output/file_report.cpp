#include "output/file_report.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include <brindle/save_plan.h>
#include <brindle/text.h>

#include "fields.h"
#include "output/json_values.h"
#include "output/printable_text.h"
#include "output/save_text.h"
#include "output/stream_text.h"
#include "output/tag_reading.h"

namespace brindle::host {

namespace {

struct Row {
    std::string label;
    std::string value;
};

struct Group {
    const char* title;
    std::vector<Row> rows;

    void add(std::string label, std::string value) {
        if (!value.empty()) {
            rows.push_back({std::move(label), std::move(value)});
        }
    }
    void add(std::string label, const String& value) { add(std::move(label), printable(value)); }
};

// Minutes and seconds for people, and the number for a schedule.
std::string time_and_number(std::int32_t ms) {
    return time_text(ms) + "  (" + std::to_string(ms) + " ms)";
}

std::string bit_rate_text(const cMPEGHeader& header) {
    return std::to_string(kilobits_per_second(header)) +
           (header.VBR() ? " kbit/s on average, variable" : " kbit/s, constant");
}

Group stream(const cMPEGHeader& header) {
    Group group{"Stream", {}};
    if (!has_stream(header)) {
        group.add("Format", std::string("no MPEG audio found"));
        return group;
    }
    group.add("Format", format_text(header));
    group.add("Channels", header.MonoStereo());
    if (const std::int32_t duration = header.Duration(); duration != 0) {
        group.add("Duration", time_and_number(duration));
    }
    group.add("Bitrate", bit_rate_text(header));
    group.add("Sampling rate", std::to_string(header.Frequency()) + " Hz");
    if (header.RepairRequired()) {
        group.add("Repair required", std::string("yes, audio does not begin where the tag ends"));
    }
    return group;
}

// The text in the tag, and the text that hosts read if it differs.
std::string both_readings(const std::optional<String>& tag, const String& hosts) {
    if (!tag || *tag == hosts) {
        return printable(hosts);
    }
    return printable(*tag) + "  (hosts read: " + in_quotes(hosts) + ")";
}

// Of a field outside of user-defined texts. A missing number reads as 0.
std::string tag_field_text(const Field& field, const cMPEGHeader& header, const TagFacts& facts) {
    const std::optional<String> tag =
        field.is_in_record() ? std::nullopt : tag_text(facts, field.frame_id);
    const Variant value = field.access.get(header);
    if (const auto* text = std::get_if<String>(&value)) {
        return both_readings(tag, *text);
    }
    const std::string digits = json_text(value);
    return both_readings(tag, digits == "0" && !tag ? String() : from_utf8(digits));
}

Group tags(const cMPEGHeader& header) {
    const TagFacts facts = read_tag_facts(header);
    Group group{"Tags", {}};
    group.add("Present", tag_type_text(header.TagType()));
    if (const std::int32_t size = header.ID3TagSizeIncludingHeader(); size != 0) {
        group.add("ID3v2 length", std::to_string(size) + " bytes");
    }
    const std::u16string_view kGenre = u"TCON";
    for (const Field& field : all_fields()) {
        // Genre 0 is a genre, so its value can't tell whether there is one.
        const bool is_present = field.frame_id != kGenre || header.TagsInFrame(field.frame_id) != 0;
        if (field.label != nullptr && !field.is_custom() && is_present) {
            group.add(field.label, tag_field_text(field, header, facts));
        }
    }
    return group;
}

std::string scheduling_field_text(const Field& field, const cMPEGHeader& header) {
    const Variant value = field.access.get(header);
    switch (field.access.type) {
        case FieldType::Milliseconds:
            return time_and_number(std::get<std::int32_t>(value));
        case FieldType::YesNo:
            return std::get<std::int32_t>(value) != 0 ? "yes" : "no";
        default:
            break;
    }
    if (const auto* text = std::get_if<String>(&value)) {
        return printable(*text);
    }
    return field.access.type == FieldType::Category ? "" : json_text(value);
}

Group scheduling_fields(const cMPEGHeader& header) {
    Group group{"Scheduling fields", {}};
    for (const Field& field : all_fields()) {
        // The stored name tells whether the field is there: 0 may well have been written.
        if (field.is_custom() && header.CustomFieldExists(field.custom_name)) {
            group.add(field.label, scheduling_field_text(field, header));
        }
    }
    return group;
}

// Lyrics and private data would push everything else off the screen.
constexpr std::size_t kLongestShown = 120;

std::string frame_text(const String& id, const String& value) {
    if (is_picture(id)) {
        return std::to_string(value.size()) + " bytes";
    }
    std::string shown;
    String text = value;
    if (const std::size_t description_end = value.find(u'\0');
        id == u"TXXX" && description_end != String::npos) {
        shown = printable(value.substr(0, description_end)) + " = ";
        text.erase(0, description_end + 1);
        // Some programs end the text with a NUL, which has no meaning.
        if (!text.empty() && text.back() == u'\0') {
            text.pop_back();
        }
    }
    shown += printable(text.substr(0, kLongestShown));
    if (text.size() > kLongestShown) {
        shown += " ... (" + std::to_string(text.size()) + " characters)";
    }
    return shown;
}

Group frames(const cMPEGHeader& header) {
    Group group{"Frames", {}};
    for (const String& id : tag_frame_ids(header)) {
        const std::int32_t count = header.TagsInFrame(id);
        for (std::int32_t i = 1; i <= count; ++i) {
            const std::string label = id.empty() ? "unknown" : printable(id);
            const std::string value = frame_text(id, header.v2Tag(id, i));
            // An empty value is a value: the frame is there.
            group.add(label, value.empty() ? std::string("(empty)") : value);
        }
    }
    return group;
}

SavePlan plan_of(const cMPEGHeader& header) {
    try {
        return plan_save(header);
    } catch (const Error&) {
        return {};  // a save reports the reason
    }
}

template <class Frame>
Group planned(const char* title, const std::vector<Frame>& frames) {
    Group group{title, {}};
    for (const Frame& frame : frames) {
        group.add(frame_label(frame), remark_on(frame));
    }
    return group;
}

// Of UTF-8 only the first byte of each character takes a column.
std::size_t columns(const std::string& utf8) {
    return static_cast<std::size_t>(std::count_if(utf8.begin(), utf8.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
    }));
}

std::size_t label_width(const std::vector<Group>& groups) {
    std::size_t width = 0;
    for (const Group& group : groups) {
        for (const Row& row : group.rows) {
            width = std::max(width, columns(row.label));
        }
    }
    return width;
}

}  // namespace

std::string file_report(const std::string& name, const cMPEGHeader& header) {
    const SavePlan plan = plan_of(header);
    const std::vector<Group> groups = {stream(header),
                                       tags(header),
                                       scheduling_fields(header),
                                       frames(header),
                                       planned("A save would change", plan.changes),
                                       planned("A save would lose", plan.losses)};
    const std::size_t width = label_width(groups);
    std::string report = printable(name) + "\n";
    for (const Group& group : groups) {
        if (group.rows.empty()) {
            continue;
        }
        report += "  ";
        report += group.title;
        report += "\n";
        for (const Row& row : group.rows) {
            report += "    " + row.label + std::string(width - columns(row.label), ' ') + "  " +
                      row.value + "\n";
        }
    }
    return report;
}

}  // namespace brindle::host
