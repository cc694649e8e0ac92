#include "output/file_report.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include <brindle/save_plan.h>
#include <brindle/tag_facts.h>
#include <brindle/text.h>

#include "output/corrupt_tag.h"
#include "output/json_values.h"
#include "output/plan_text.h"
#include "output/printable_text.h"
#include "output/stream_text.h"
#include "output/tag_frames.h"

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
    // 0 is how the members say that there is none.
    void add_unless_zero(std::string label, std::int32_t value) {
        if (value != 0) {
            add(std::move(label), std::to_string(value));
        }
    }
};

// Minutes and seconds for the eye, and the number that a schedule takes.
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

// What the tag says, and beside it what hosts read, where that is something else.
std::string both_readings(const std::optional<String>& tag, const String& hosts) {
    if (!tag || *tag == hosts) {
        return printable(hosts);
    }
    return printable(*tag) + "  (hosts read: " + in_quotes(hosts) + ")";
}

std::string both_readings(const std::optional<String>& tag, std::int32_t hosts) {
    return both_readings(tag, hosts == 0 && !tag ? String() : from_utf8(std::to_string(hosts)));
}

// The number of "(17)" or "(17)Refinement".
std::optional<String> genre_number(const TagFacts& facts) {
    const std::optional<String> text = facts.text(u"TCON");
    const std::size_t end = text ? text->find(u')') : String::npos;
    const bool has_number = end != String::npos && text->front() == u'(';
    return has_number ? text->substr(1, end - 1) : text;
}

TagFacts facts_of(const cMPEGHeader& header) {
    try {
        return read_tag_facts(header);
    } catch (const Error&) {
        return {};  // it has gone since it was opened
    }
}

Group tags(const cMPEGHeader& header) {
    const TagFacts facts = facts_of(header);
    Group group{"Tags", {}};
    group.add("Present", tag_type_text(header.TagType()));
    if (const std::int32_t size = header.ID3TagSizeIncludingHeader(); size != 0) {
        group.add("ID3v2 length", std::to_string(size) + " bytes");
    }
    const auto add_text = [&](const char* label, const char16_t* id, const String& hosts) {
        group.add(label, both_readings(facts.text(id), hosts));
    };
    add_text("Title", u"TIT2", title_of(header));
    add_text("Artist", u"TPE1", artist_of(header));
    add_text("Album", u"TALB", header.Album());
    group.add("Year", both_readings(facts.text(u"TYER"), header.Year()));
    group.add("Track", both_readings(facts.text(u"TRCK"), header.Track()));
    // Genre 0 is a genre, so its value can't tell whether there is one.
    if (header.TagsInFrame(u"TCON") != 0) {
        group.add("Genre number", both_readings(genre_number(facts), header.Genre()));
    }
    group.add("Comment", both_readings(facts.comment(), header.Comments()));
    add_text("Composer", u"TCOM", header.Composer());
    add_text("Publisher", u"TPUB", header.Publisher());
    add_text("Copyright", u"TCOP", header.CopyRight());
    add_text("URL", u"WOAR", header.URL());
    group.add("ID3v1 title", header.Titlev1Tag());
    group.add("ID3v1 artist", header.artistv1Tag());
    group.add_unless_zero("ID3v1 year", header.Yearv1Tag());
    group.add("ID3v1 comment", header.Commentv1());
    return group;
}

// The name under which a tag keeps a field tells whether it is there: 0 may well have been written.
struct SchedulingField {
    const char* label;
    const char16_t* stored_name;
    std::string (*text)(const cMPEGHeader& header);
};

template <std::int32_t (cMPEGHeader::*Get)() const>
std::string time_of(const cMPEGHeader& header) {
    return time_and_number((header.*Get)());
}

template <class Number, Number (cMPEGHeader::*Get)() const>
std::string number_of(const cMPEGHeader& header) {
    return to_json((header.*Get)()).dump();
}

template <String (cMPEGHeader::*Get)() const>
std::string text_of(const cMPEGHeader& header) {
    return printable((header.*Get)());
}

std::string opener_of(const cMPEGHeader& header) {
    return header.Opener() != 0 ? "yes" : "no";
}

std::string category_of(const cMPEGHeader& header) {
    const Variant category = header.Category();
    const auto* text = std::get_if<String>(&category);
    return text != nullptr ? printable(*text) : std::string();
}

constexpr SchedulingField kSchedulingFields[] = {
    {"Cue in", u"Cue In", time_of<&cMPEGHeader::CueInmSStart>},
    {"Intro", u"Intro", time_of<&cMPEGHeader::Intro>},
    {"Outro start", u"OutromSStart", time_of<&cMPEGHeader::OutromsStart>},
    {"Secondary tone", u"Sec Tone", time_of<&cMPEGHeader::Sectone>},
    {"Speed", u"TarnSpeed", number_of<double, &cMPEGHeader::Speed>},
    {"Volume", u"Volume", number_of<std::int32_t, &cMPEGHeader::Volume>},
    {"Opener", u"Opener", opener_of},
    {"Category", u"Category", category_of},
    {"Category level", u"CatLevel", text_of<&cMPEGHeader::CategoryLevel>},
    {"End style", u"End", text_of<&cMPEGHeader::Endstyle>},
    {"No fade", u"NoFade", number_of<std::int16_t, &cMPEGHeader::NoFade>},
    {"Agency", u"Agency", text_of<&cMPEGHeader::Agency>},
    {"Account executive", u"Account Exec", text_of<&cMPEGHeader::AccountExec>},
    {"Copy", u"Copy", text_of<&cMPEGHeader::Copy>},
};

Group scheduling_fields(const cMPEGHeader& header) {
    Group group{"Scheduling fields", {}};
    for (const SchedulingField& field : kSchedulingFields) {
        if (header.CustomFieldExists(field.stored_name)) {
            group.add(field.label, field.text(header));
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
        // Some programs end the text with a NUL; nothing is said by it.
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
        // Whoever saves is told.
        return {};
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
