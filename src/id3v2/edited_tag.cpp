#include "id3v2/edited_tag.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "id3v2/common_form.h"
#include "id3v2/custom_field_names.h"
#include "id3v2/custom_fields.h"
#include "id3v2/documented_ids.h"
#include "id3v2/frame_form.h"
#include "id3v2/frame_text.h"
#include "id3v2/imported_frame.h"
#include "id3v2/public_tag_reader.h"
#include "id3v2/rewritten_frame.h"
#include "id3v2/tag_layout.h"
#include "id3v2/text_encoding.h"
#include "util/code_page.h"

namespace brindle {

namespace {

using ByteVector = std::vector<std::uint8_t>;
using Bytes = std::span<const std::uint8_t>;

constexpr std::string_view kPicture = "APIC";
constexpr std::string_view kYear = "TYER";
constexpr std::string_view kDate = "TDAT";
constexpr std::string_view kTime = "TIME";
constexpr std::string_view kRecordingTime = "TDRC";
constexpr std::string_view kOriginalYear = "TORY";
constexpr std::string_view kOriginalTime = "TDOR";
constexpr std::string_view kPeople = "IPLS";
constexpr std::string_view kPeopleOfVersion4[] = {"TIPL", "TMCL"};

constexpr std::size_t kMaxPictureInMemory = std::size_t{64} * 1024 * 1024;

// Names that are longer are not looked for.
constexpr std::size_t kMaxNameRead = 8'192;

// Upper and lower case as one, for the letters that the code page has of both.
String folded(String name) {
    for (char16_t& unit : name) {
        const bool is_ascii = unit >= u'A' && unit <= u'Z';
        const bool is_latin1 = unit >= u'\u00C0' && unit <= u'\u00DE' && unit != u'\u00D7';
        if (is_ascii || is_latin1) {
            unit = static_cast<char16_t>(unit + (u'a' - u'A'));
        }
    }
    return name;
}

// The name under which hosts find a user-defined text; none where they do not see a field in it.
std::optional<String> name_for_hosts(Bytes content) {
    const auto begin =
        std::find_if(content.begin(), content.end(), [](std::uint8_t byte) { return byte != 0; });
    const auto end = std::find(begin, content.end(), std::uint8_t{0});
    const bool is_field =
        std::find(content.begin(), content.end(), std::uint8_t{0}) != content.end();
    return is_field ? std::optional(widen(Bytes(begin, end))) : std::nullopt;
}

// Of a comment or lyrics: no description, or the form that the component writes, which has none.
bool is_without_description(Bytes content) {
    constexpr std::size_t kPrefix = 4;  // encoding, language
    if (content.size() < kPrefix || content.front() > kLastEncoding) {
        return true;
    }
    const auto encoding = static_cast<TextEncoding>(content.front());
    const Bytes text = content.subspan(kPrefix);
    const std::size_t length = string_length(encoding, text);
    return length == text.size() || decoded(encoding, text.first(length)).empty();
}

// Year, date and time of a recording time like "2003-05-06T10:20", as version 2.3 writes them.
struct RecordingTime {
    std::string year;
    std::string date;
    std::string time;

    explicit RecordingTime(std::string_view text) {
        constexpr std::string_view kForm = "0000-00-00T00:00";
        std::size_t valid = 0;
        while (valid < std::min(text.size(), kForm.size()) && matches(text[valid], kForm[valid])) {
            ++valid;
        }
        const auto part = [&](std::size_t begin, std::size_t width) {
            return begin + width <= valid ? std::string(text.substr(begin, width)) : std::string();
        };
        year = part(0, 4);
        if (const std::string day = part(8, 2); !day.empty()) {
            date = day + part(5, 2);
        }
        if (const std::string minute = part(14, 2); !minute.empty()) {
            time = part(11, 2) + minute;
        }
    }

private:
    static bool matches(char character, char form) {
        return form == '0' ? character >= '0' && character <= '9' : character == form;
    }
};

// A frame of the old tag that goes into the new one.
struct Entry {
    std::size_t place = 0;  // in the plan
    std::string id;         // of version 2.3
    std::uint8_t version = 0;
    PublicFrame source;
    // None: it is written as the bytes of the file from its header on.
    std::optional<ImportedFrame> imported;
    std::optional<std::size_t> field;  // that replaces it
    bool is_dropped = false;
};

bool can_be_stepped_over(std::string_view id, std::uint64_t body) noexcept {
    return body <= (id == kPicture ? kLargestPictureSize : kLargestTextSize);
}

class TagEditor {
public:
    TagEditor(BinaryFile& file, FileWindow& window, std::span<const EditedField> fields,
              const EditOptions& options, EditPlan& plan)
        : file_(file), window_(window), fields_(fields), options_(options), plan_(plan) {
        frames_.reserve(fields.size());
        const auto narrow = options.unicode ? std::optional(options.latin1 ? NarrowText::Latin1
                                                                           : NarrowText::CodePage)
                                            : std::nullopt;
        for (std::size_t i = 0; i < fields.size(); ++i) {
            const EditedField& field = fields[i];
            field_of_key_.try_emplace({field.id, field.custom_name}, i);
            frames_.push_back(frame_of(fields[i], narrow));
            if (fields[i].id == kCustomId) {
                folded_names_.insert(folded(fields[i].custom_name));
            }
        }
        placed_.resize(fields.size());
        for (const FieldName& field : options.removed) {
            removed_.emplace(id_of_text(field.id), field.custom_name);
        }
    }

    void read(const ByteRange& area) {
        for (const PublicTag& tag : read_public_tags(window_, area)) {
            for (const PublicFrame& frame : tag.frames) {
                take(frame, tag.version);
            }
            take_rest(tag.rest);
        }
    }

    FileContent write() {
        if (options_.new_image || options_.new_text) {
            std::for_each(entries_.begin(), entries_.end(),
                          [this](Entry& entry) { rewrite(entry); });
        }
        split_recording_time();
        if (options_.common_form) {
            add_original_year();
            make_list_of_people();
            std::for_each(entries_.begin(), entries_.end(),
                          [this](Entry& entry) { recode(entry); });
        }
        std::size_t last_small = 0;
        for (std::size_t i = 0; i < entries_.size(); ++i) {
            last_small = !entries_[i].is_dropped && is_small(entries_[i]) ? i : last_small;
        }
        write_entries(true, last_small);
        for (std::size_t i = 0; i < fields_.size(); ++i) {
            if (!placed_[i]) {
                append(frames_[i]);
            }
        }
        for (const ByteVector& frame : more_frames_) {
            append(frame);
        }
        write_entries(false, last_small);
        flush();
        return std::move(content_);
    }

private:
    using Key = std::pair<std::string, String>;  // id, name

    EditedFrame& planned(const Entry& entry) { return plan_.frames[entry.place]; }

    void lose(EditedFrame frame, EditLoss loss) {
        frame.fate = FrameFate::Lost;
        frame.loss = loss;
        plan_.frames.push_back(std::move(frame));
    }

    void take(const PublicFrame& frame, std::uint8_t version) {
        EditedFrame planned_frame;
        planned_frame.id = text_of_id(frame.id());
        planned_frame.size = frame.size;
        planned_frame.number = ++counts_[std::string(frame.id())];
        Entry entry;
        entry.version = version;
        entry.source = frame;
        entry.id = version == kOldestVersion ? successor_of_version2_id(frame.id()) : frame.id();
        const ByteVector head =
            has_description(entry.id) ? read_content(window_, frame, kMaxNameRead) : ByteVector();
        if (entry.id == kCustomId) {
            planned_frame.name = description_of(head);
        }
        if (!frame.is_whole) {
            return lose(std::move(planned_frame), EditLoss::CutByTagEnd);
        }
        if (version != 3 || frame.is_unsynchronised) {
            entry.imported = import_frame(file_, version, frame);
            if (!entry.imported) {
                return lose(std::move(planned_frame), version == kOldestVersion
                                                          ? EditLoss::UnknownId
                                                          : EditLoss::UnknownLength);
            }
            planned_frame.fate =
                entry.imported->is_converted ? FrameFate::Converted : FrameFate::Kept;
        }
        entry.place = plan_.frames.size();
        plan_.frames.push_back(std::move(planned_frame));
        match(entry, head);
        entries_.push_back(std::move(entry));
    }

    // What is neither frame nor padding.
    void take_rest(const ByteRange& rest) {
        const std::int64_t other = end_of_zeros(window_, rest);
        if (other < rest.end) {
            EditedFrame frame;
            frame.size = rest.end - other;
            lose(std::move(frame), EditLoss::NoFrame);
        }
    }

    // Finds the field that replaces the frame, or whose frames are to go.
    void match(Entry& entry, Bytes head) {
        const String& name = planned(entry).name;
        std::optional<String> hosts_name;
        std::vector<Key> keys;
        if (entry.id == kCustomId) {
            hosts_name = name_for_hosts(head);
            keys.emplace_back(entry.id, name);
            if (hosts_name) {
                keys.emplace_back(entry.id, *hosts_name);
            }
        } else if (!has_description(entry.id) || is_without_description(head)) {
            keys.emplace_back(entry.id == kRecordingTime ? kYear : entry.id, String());
        }
        for (const Key& key : keys) {
            entry.field = entry.field ? entry.field : find_field(key.first, key.second);
        }
        if (entry.field) {
            return replace(entry);
        }
        if (std::any_of(keys.begin(), keys.end(),
                        [this](const Key& key) { return removed_.contains(key); })) {
            planned(entry).fate = FrameFate::Removed;
            entry.is_dropped = true;
            return;
        }
        if (entry.id == kCustomId) {
            if (folded_names_.contains(folded(name))) {
                plan_.other_cases.push_back(planned(entry));
            }
            if (is_scheduling_field(name) && hosts_name != name) {
                plan_.unseen.push_back(planned(entry));
            }
        }
    }

    [[nodiscard]] std::optional<std::size_t> find_field(std::string_view id,
                                                        std::u16string_view name) const {
        const auto field = field_of_key_.find({id, name});
        return field == field_of_key_.end() ? std::nullopt : std::optional(field->second);
    }

    void replace(Entry& entry) {
        planned(entry).fate = FrameFate::Changed;
        if (placed_[*entry.field]) {
            entry.is_dropped = true;
            plan_.duplicates.push_back(planned(entry));
        }
        placed_[*entry.field] = true;
    }

    // A frame of version 2.4 that stays.
    [[nodiscard]] Entry* find_version4(std::string_view id) {
        const auto entry =
            std::find_if(entries_.begin(), entries_.end(), [&](const Entry& candidate) {
                return candidate.id == id && candidate.version == kNewestVersion &&
                       !candidate.field && !candidate.is_dropped;
            });
        return entry == entries_.end() ? nullptr : &*entry;
    }

    // The time of such a frame; without parts where there is none.
    [[nodiscard]] RecordingTime time_of(std::string_view id) {
        constexpr std::size_t kMaxTime = 64;
        const Entry* const entry = find_version4(id);
        if (entry == nullptr) {
            return RecordingTime({});
        }
        const FrameText text(id, entry->imported->head(kMaxTime));
        return RecordingTime(id_of_text(text.values.front()));
    }

    // Programs of version 2.3 look for the parts.
    void split_recording_time() {
        if (find_field(kYear, {})) {
            return;
        }
        const RecordingTime time = time_of(kRecordingTime);
        add_part(kYear, time.year);
        add_part(kDate, time.date);
        add_part(kTime, time.time);
    }

    void add_part(std::string_view id, const std::string& text) {
        const bool is_there = std::any_of(entries_.begin(), entries_.end(),
                                          [&](const Entry& entry) { return entry.id == id; });
        if (!text.empty() && !is_there) {
            more_frames_.push_back(text_frame(id, text));
        }
    }

    void add_original_year() { add_part(kOriginalYear, time_of(kOriginalTime).year); }

    // Version 2.3 has one list for those who were involved and those who played.
    void make_list_of_people() {
        const bool has_list = std::any_of(entries_.begin(), entries_.end(),
                                          [](const Entry& entry) { return entry.id == kPeople; });
        Entry* list = nullptr;
        std::vector<String> people;
        for (const std::string_view id : kPeopleOfVersion4) {
            Entry* const entry = has_list ? nullptr : find_version4(id);
            const auto content = entry == nullptr ? std::nullopt : content_of(*entry->imported);
            if (!content) {
                continue;
            }
            const FrameText text(id, *content);
            if (text.values.size() % 2 != 0) {
                continue;  // no list of pairs
            }
            people.insert(people.end(), text.values.begin(), text.values.end());
            entry->is_dropped = list != nullptr;
            list = list == nullptr ? entry : list;
        }
        if (list != nullptr) {
            list->id = kPeople;
            std::copy(kPeople.begin(), kPeople.end(), list->imported->id_bytes.begin());
            replace_content(*list->imported, list_of_people(people));
        }
    }

    // All of it; nothing if it cannot be decoded, or is longer than any text.
    static std::optional<ByteVector> content_of(const ImportedFrame& frame) {
        if (frame.is_packed || std::cmp_greater(frame.body.size(), kMaxBodyInMemory)) {
            return std::nullopt;
        }
        return frame.head(kMaxBodyInMemory);
    }

    static void replace_content(ImportedFrame& frame, ByteVector content) {
        ByteVector body = frame.body.read({0, frame.prefix});
        body.insert(body.end(), content.begin(), content.end());
        frame.body = FileContent();
        frame.body.append_owned(std::move(body));
    }

    // Asks the caller for other content.
    void rewrite(Entry& entry) {
        const bool is_asked = entry.id == kPicture ? options_.new_image != nullptr
                                                   : options_.new_text && has_values(entry.id);
        if (entry.field || entry.is_dropped || !is_asked) {
            return;
        }
        std::optional<ImportedFrame> frame =
            entry.imported ? entry.imported : import_frame(file_, entry.version, entry.source);
        const std::size_t limit = entry.id == kPicture ? kMaxPictureInMemory : kMaxBodyInMemory;
        if (frame->is_packed || std::cmp_greater(frame->body.size(), limit)) {
            return;
        }
        const ByteVector content = frame->head(limit);
        std::optional<ByteVector> other =
            entry.id == kPicture
                ? with_new_image(content, static_cast<std::size_t>(frame->prefix), planned(entry),
                                 options_.new_image)
                : with_new_text(entry.id, content, planned(entry), options_.new_text);
        if (!other) {
            return;
        }
        planned(entry).fate = FrameFate::Changed;
        plan_.rewritten.push_back(planned(entry));
        entry.imported = std::move(frame);
        replace_content(*entry.imported, std::move(*other));
    }

    void recode(Entry& entry) {
        if (entry.field || entry.is_dropped) {
            return;
        }
        std::optional<ImportedFrame> frame =
            entry.imported ? entry.imported : import_frame(file_, entry.version, entry.source);
        const auto content = content_of(*frame);
        if (!content) {
            return;
        }
        CommonForm form = in_common_form(entry.id, *content, entry.version == kNewestVersion);
        if (form.result == CommonFormResult::AsBefore) {
            return;
        }
        if (form.result == CommonFormResult::NoneThere) {
            plan_.without_common_form.push_back(planned(entry));
            return;
        }
        if (form.result == CommonFormResult::Joined) {
            plan_.joined.push_back(planned(entry));
        }
        if (planned(entry).fate != FrameFate::Changed) {
            planned(entry).fate = FrameFate::Converted;
        }
        std::erase_if(plan_.unseen, [&](const TagFrame& unseen) {
            return unseen.id == planned(entry).id && unseen.number == planned(entry).number;
        });
        entry.imported = std::move(frame);
        replace_content(*entry.imported, std::move(form.content));
    }

    [[nodiscard]] std::uint64_t body_size(const Entry& entry) const {
        if (entry.field) {
            return frames_[*entry.field].size() - kFrameLayout.header_size;
        }
        return static_cast<std::uint64_t>(entry.imported ? entry.imported->body.size()
                                                         : entry.source.size);
    }

    [[nodiscard]] bool is_small(const Entry& entry) const {
        return can_be_stepped_over(entry.id, body_size(entry));
    }

    // Those that hosts can step over, or the others.
    void write_entries(bool small, std::size_t last_small) {
        for (std::size_t i = 0; i < entries_.size(); ++i) {
            const Entry& entry = entries_[i];
            if (entry.is_dropped || is_small(entry) != small) {
                continue;
            }
            if (!small) {
                if (i < last_small && planned(entry).fate == FrameFate::Kept) {
                    planned(entry).fate = FrameFate::Moved;
                }
                plan_.oversized.push_back(planned(entry));
            }
            write_entry(entry);
        }
    }

    void write_entry(const Entry& entry) {
        if (entry.field) {
            return append(frames_[*entry.field]);
        }
        if (!entry.imported) {
            flush();
            content_.append(file_, {entry.source.position, entry.source.body_end});
            return;
        }
        const ImportedFrame& frame = *entry.imported;
        append(
            frame_header(frame.id(), static_cast<std::uint64_t>(frame.body.size()), frame.flags));
        if (std::cmp_less_equal(frame.body.size(), kMaxBodyInMemory)) {
            append(frame.body.read_all());
        } else {
            flush();
            content_.append(frame.body);
        }
    }

    // Small ones are gathered, so that a tag of many frames stays a content of few pieces.
    void append(Bytes bytes) { gathered_.insert(gathered_.end(), bytes.begin(), bytes.end()); }
    void flush() { content_.append_owned(std::exchange(gathered_, {})); }

    BinaryFile& file_;
    FileWindow& window_;
    std::span<const EditedField> fields_;
    const EditOptions& options_;
    EditPlan& plan_;
    std::map<std::pair<std::string_view, std::u16string_view>, std::size_t> field_of_key_;
    std::set<Key> removed_;
    std::set<String> folded_names_;
    std::vector<ByteVector> frames_;  // of the fields
    std::vector<bool> placed_;        // of the fields: they have a place among the entries
    std::vector<ByteVector> more_frames_;
    std::map<std::string, std::int32_t> counts_;
    std::vector<Entry> entries_;
    ByteVector gathered_;
    FileContent content_;
};

}  // namespace

FileContent edited_frames(BinaryFile& file, FileWindow& window, const ByteRange& area,
                          std::span<const EditedField> fields, const EditOptions& options,
                          EditPlan& plan) {
    TagEditor editor(file, window, fields, options, plan);
    editor.read(area);
    return editor.write();
}

}  // namespace brindle
