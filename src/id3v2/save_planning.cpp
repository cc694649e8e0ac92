#include "id3v2/save_planning.h"

#include <algorithm>
#include <map>
#include <span>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "id3v2/error_sources.h"
#include "id3v2/frame_form.h"
#include "id3v2/plan_step.h"
#include "id3v2/public_tag_reader.h"
#include "id3v2/stream_finder.h"
#include "id3v2/tag_area.h"
#include "id3v2/tag_builder.h"
#include "id3v2/tag_layout.h"
#include "id3v2/tag_reader.h"
#include "id3v2/tag_search.h"
#include "id3v2/tag_writer.h"
#include "util/big_endian.h"
#include "util/code_page.h"
#include "util/window_file.h"

namespace brindle {

namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::string_view kPictureId = "APIC";
constexpr std::u16string_view kVersion2Custom = u"TXX";

// More than any frame that is taken into memory has; what is longer can't have been kept.
constexpr std::size_t kMaxCompared = kLargestPictureSize + 1;

// As it stands in a built tag, where an id of version 2.2 ends with a NUL.
FrameId written_id(const String& id) {
    std::string bytes = id_of_text(id);
    bytes.resize(kFrameLayout.id_width);
    return frame_id(bytes);
}

bool same(const StoredText* a, const StoredText* b) {
    return a == nullptr || b == nullptr ? a == b : *a == *b;
}

// The file's tags as this library reads them, with the place of each frame.
struct KnownFrames {
    TagContents contents;
    std::vector<FiledFrame> filed;  // by position
    bool corrupt = false;

    explicit KnownFrames(FileWindow& file) {
        const std::optional<std::int32_t> position = find_tag(file);
        if (!position) {
            return;
        }
        const TagReading first = read(file, *position);
        corrupt = first.corrupt;
        const std::int64_t length = first.size + static_cast<std::int64_t>(kTagHeaderSize);
        if (is_tag_at(file, length)) {
            read(file, length);
        }
        // A walk that leaves its tag may have gone through the next one already.
        std::stable_sort(filed.begin(), filed.end(), [](const FiledFrame& a, const FiledFrame& b) {
            return a.position < b.position;
        });
    }

    [[nodiscard]] const FiledFrame* at(std::int64_t position) const {
        const auto frame = std::lower_bound(
            filed.begin(), filed.end(), position,
            [](const FiledFrame& f, std::int64_t wanted) { return f.position < wanted; });
        return frame == filed.end() || frame->position != position ? nullptr : &*frame;
    }

private:
    TagReading read(FileWindow& file, std::int64_t position) {
        TagReading facts = TagReader(file, contents, &filed).read(position);
        if (facts.fault) {
            throw Error(*facts.fault);
        }
        return facts;
    }
};

// The frames of a built tag by id and number.
class WrittenFrames {
public:
    // The tag must stay where it is.
    explicit WrittenFrames(Bytes tag) : tag_(tag) {
        std::map<FrameId, std::int32_t> counts;
        std::size_t position = kTagHeaderSize;
        while (position + kFrameLayout.header_size <= tag_.size()) {
            const Bytes header = tag_.subspan(position, kFrameLayout.header_size);
            const auto id = FrameId{big_endian<4>(header.data())};
            const auto size = static_cast<std::size_t>(decode_number(
                header.subspan(kFrameLayout.id_width, kFrameLayout.size_width), kPlainShift));
            position += kFrameLayout.header_size;
            frames_.push_back({id, ++counts[id], position, size});
            position += size;
        }
        std::sort(frames_.begin(), frames_.end(), [](const Frame& a, const Frame& b) {
            return std::tie(a.id, a.number) < std::tie(b.id, b.number);
        });
    }

    [[nodiscard]] std::int64_t length() const { return static_cast<std::int64_t>(tag_.size()); }

    [[nodiscard]] std::optional<Bytes> body(const String& id, std::int32_t number) const {
        const auto wanted = std::pair(written_id(id), number);
        const auto frame = std::lower_bound(
            frames_.begin(), frames_.end(), wanted, [](const Frame& f, const auto& w) {
                return std::tie(f.id, f.number) < std::tie(w.first, w.second);
            });
        if (frame == frames_.end() || frame->id != wanted.first || frame->number != number) {
            return std::nullopt;
        }
        return tag_.subspan(frame->body, frame->size);
    }

private:
    struct Frame {
        FrameId id;
        std::int32_t number;
        std::size_t body;
        std::size_t size;
    };

    Bytes tag_;
    std::vector<Frame> frames_;
};

// Follows each frame that a reader by the public documents finds in the file's tags into the tag
// that would be written.
class SaveLossAnalyser {
public:
    SaveLossAnalyser(FileWindow& file, const FrameStore& to_write, WrittenFrames written,
                     SavePlan& plan)
        : file_(file),
          known_(file),
          to_write_(to_write),
          written_(std::move(written)),
          plan_(plan) {}

    void add(const PublicTag& tag) {
        for (const PublicFrame& frame : tag.frames) {
            if (frame.size == 0) {
                continue;  // no frame at all
            }
            TagFrame entry{text_of_id(frame.id()), 0, frame.size, {}};
            entry.number = ++counts_[written_id(entry.id)];
            if (entry.id == kCustomFrame || entry.id == kVersion2Custom) {
                entry.name = description_of(read_content(file_, frame, kMaxCompared));
            }
            const FiledFrame* filed = known_.at(frame.position);
            if (tag.version == kOldestVersion) {
                analyse_version2(frame, filed, entry);
            } else if (filed == nullptr) {
                analyse_unread(frame, entry);
            } else {
                analyse_read(frame, *filed, entry);
            }
        }
    }

private:
    // The reading has it under an id and number: is it still there, and does it stand in the tag?
    void analyse_read(const PublicFrame& frame, const FiledFrame& filed, const TagFrame& entry) {
        const StoredText* as_read = known_.contents.frames.value(filed.id, filed.number);
        const StoredText* now = to_write_.value(filed.id, filed.number);
        if (now == nullptr || !to_write_.is_listed(filed.id) || !same(as_read, now)) {
            return;  // removed or replaced by the host, or a stamp
        }
        const std::optional<Bytes> body = written_.body(filed.id, filed.number);
        if (!body) {
            lose(entry, LossReason::NotWritten);
            return;
        }
        compare(frame, filed, entry, *body);
    }

    void compare(const PublicFrame& frame, const FiledFrame& filed, const TagFrame& entry,
                 Bytes written) {
        const std::vector<std::uint8_t> content = read_content(file_, frame, kMaxCompared);
        const bool is_comparable = !frame.is_packed && content.size() < kMaxCompared;
        if (is_comparable &&
            std::equal(content.begin(), content.end(), written.begin(), written.end())) {
            return;
        }
        const String id = filed.id;
        const bool same_text = is_comparable && is_text_frame(frame.id()) &&
                               text_of_frame(frame.id(), content) == written_text(frame, written);
        const std::int64_t extent = frame.body_end - frame.body;
        const bool is_as_it_stands = std::cmp_equal(filed.size, frame.size) &&
                                     std::cmp_equal(content.size(), extent) && frame.prefix == 0 &&
                                     !frame.is_packed;
        if (same_text || is_as_it_stands) {
            plan_.changes.push_back({entry, same_text});
        } else {
            lose(entry, LossReason::Misread);
        }
    }

    // Whatever the frame, an encoding byte stands in front of 8-bit text.
    static String written_text(const PublicFrame& frame, Bytes written) {
        const bool is_picture = frame.id() == kPictureId;
        String text = widen(is_picture || written.empty() ? written : written.subspan(1));
        std::erase(text, u'\0');
        return text;
    }

    void analyse_unread(const PublicFrame& frame, const TagFrame& entry) {
        if (is_set_by_host(entry)) {
            return;
        }
        const auto size = static_cast<std::uint64_t>(frame.size);
        if (size > (frame.id() == kPictureId ? kLargestPictureSize : kLargestTextSize)) {
            lose(entry, LossReason::TooLarge);
        } else {
            lose(entry, known_.corrupt ? LossReason::AfterCorrupt : LossReason::NotReached);
        }
    }

    // A value that is not the file's stands under the same id, or name. Properties set the first
    // value of their id.
    [[nodiscard]] bool is_set_by_host(const TagFrame& entry) const {
        const String id = entry.id == kVersion2Custom ? String(kCustomFrame) : entry.id;
        const std::int32_t number =
            id == kCustomFrame ? to_write_.find_custom(entry.name) : std::int32_t{1};
        const StoredText* value = number == 0 ? nullptr : to_write_.value(id, number);
        return value != nullptr && !same(value, known_.contents.frames.value(id, number));
    }

    // Of these only three texts go on, each from the last frame of its id.
    void analyse_version2(const PublicFrame& frame, const FiledFrame* filed,
                          const TagFrame& entry) {
        if (entry.id == kVersion2Custom) {
            if (!is_set_by_host(entry)) {
                lose(entry, LossReason::Version2);
            }
            return;
        }
        const String id = text_of_id(from_version2_id(frame.id()));
        const std::optional<Bytes> body = id.empty() ? std::nullopt : written_.body(id, 1);
        if (!body) {
            lose(entry, LossReason::Version2);
            return;
        }
        const std::vector<std::uint8_t> content = read_content(file_, frame, kMaxCompared);
        if (std::equal(content.begin(), content.end(), body->begin(), body->end())) {
            return;
        }
        const FrameStore& known = known_.contents.frames;
        const std::int32_t last = known.count(id).value_or(0);
        const StoredText* as_read = last == 0 ? nullptr : known.value(id, last);
        if (!same(as_read, to_write_.value(id, 1)) && !(last == 0 && body->size() == 1)) {
            return;  // set by the host
        }
        const bool same_text = text_of_frame(frame.id(), content) == written_text(frame, *body);
        if (same_text || (filed != nullptr && filed->number == last)) {
            plan_.changes.push_back({entry, same_text});
        } else {
            lose(entry, LossReason::Version2);
        }
    }

    void lose(const TagFrame& entry, LossReason reason) { plan_.losses.push_back({entry, reason}); }

    FileWindow& file_;
    KnownFrames known_;
    const FrameStore& to_write_;
    WrittenFrames written_;
    SavePlan& plan_;
    std::map<FrameId, std::int32_t> counts_;
};

void plan(const FileReading& reading, BinaryFile& disk_file, SavePlan& plan) {
    FileWindow window(disk_file);
    WindowFile file(window);
    plan.tag_version = reading.tag_version;
    plan_step(plan.refusal, [&] { require_addressable_length(window.length()); });
    if (plan.refusal) {
        return;
    }
    const std::optional<AcceptedFrame> accepted = reading.accepted_after_tag_in(window);
    const FrameStore to_write = frames_to_save(reading);
    const std::vector<std::uint8_t> built = build_tag(to_write);
    WrittenFrames written(built);
    plan.needed_length = written.length();

    TagArea area;
    plan_step(plan.refusal, [&] {
        const Id3v1Change record = reading.record.plan(disk_file, window.length());
        const FileContent content = with_record(file, window.length(), record);
        ContentFile content_file(content);
        FileWindow content_window(content_file);
        area = find_tag_area(content_window, accepted);
        plan.tag_area = area.position ? area.length : 0;
        const bool is_converted = reading.tag_version == kOldestVersion;
        plan.fits = !is_converted && area.fits(plan.needed_length);
        FileContent new_tag;
        new_tag.append(built);
        const SaveLayout layout = is_converted ? convert_version2(reading, content, area).layout
                                               : lay_out(content, area, new_tag);
        layout.require_addressable();
        plan.loses_stream = loses_stream(reading.environment(), reading.name(), layout, accepted);
    });

    SaveLossAnalyser analyser(window, to_write, std::move(written), plan);
    const std::int64_t audio = area.audio.value_or(window.length());
    const auto analyse_from = [&](std::int64_t position) {
        while (position < audio) {
            const std::optional<PublicTag> tag = read_public_tag(window, position);
            if (!tag) {
                break;
            }
            analyser.add(*tag);
            position = tag->end;
        }
        return position;
    };
    const std::int64_t end = analyse_from(0);
    if (area.position && *area.position >= end && *area.position > 0) {
        analyse_from(*area.position);
    }
}

void plan(const FileReading& reading, BinaryFile& file, std::int32_t tags, StripPlan& plan) {
    FileWindow window(file);
    const std::int64_t length = window.length();
    require_addressable_length(length);
    const std::optional<AcceptedFrame> accepted = reading.accepted_in(window);
    const TagArea area = strips_tag(tags) ? find_tag_area(window, accepted) : TagArea();
    const StrippedFile stripped = strip_tags(file, length, tags, area);
    plan.record_bytes = length - stripped.end;
    plan.tag_bytes = stripped.end - stripped.content.size();
    plan.content = stripped.content.around_last_range_of(file);
    plan.loses_stream = accepted && stripped.content.size() != length &&
                        !has_stream(reading.environment(), reading.name(), stripped.content);
}

}  // namespace

SavePlan plan_save(const FileReading& reading) {
    SavePlan result;
    const std::unique_ptr<BinaryFile> file = reading.open_to_look();
    if (!file) {
        return result;
    }
    reading.require_whole(kWriterSource);
    as_writer([&] { plan(reading, *file, result); });
    return result;
}

StripPlan plan_strip(const FileReading& reading, std::int32_t tags) {
    StripPlan result;
    if (const std::unique_ptr<BinaryFile> file = reading.open_to_look()) {
        plan_step(result.refusal, [&] { as_writer([&] { plan(reading, *file, tags, result); }); });
    }
    return result;
}

}  // namespace brindle
