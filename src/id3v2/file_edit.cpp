#include "id3v2/file_edit.h"

#include <algorithm>
#include <span>
#include <utility>

#include <brindle/error.h>

#include "id3v2/custom_field_names.h"
#include "id3v2/edited_tag.h"
#include "id3v2/error_sources.h"
#include "id3v2/fact_reader.h"
#include "id3v2/imported_frame.h"
#include "id3v2/plan_step.h"
#include "id3v2/public_tag_reader.h"
#include "id3v2/stream_finder.h"
#include "id3v2/tag_area.h"
#include "id3v2/tag_builder.h"
#include "id3v2/tag_range.h"
#include "util/overwrite_file.h"

namespace brindle {

FileEdit::FileEdit(FileToEdit file, const FindAccepted& find_accepted, const cMP3ID3v1& record,
                   std::vector<EditedField> fields, EditOptions options)
    : subject_(std::move(file)),
      fields_(std::move(fields)),
      options_(std::move(options)),
      sets_nothing_(fields_.empty() && (!options_.removed.empty() || options_.common_form ||
                                        options_.new_image || options_.new_text)) {
    if (options_.left_out_from < 0 || options_.left_out_from > options_.left_out_to ||
        options_.left_out_to > subject_.state.length) {
        throw Error(RuntimeError::InvalidCall);
    }
    if (sets_nothing_) {
        // Every edit leaves it, and a tag needs a frame.
        fields_.push_back(saved_stamp());
    }
    as_writer([&] {
        plan_step(plan_.refusal, [&] {
            require_addressable_length(subject_.state.length);
            plan_record(record);
            leave_bytes_out();
            layout_.content = old_content_;
            if (!fields_.empty()) {
                plan_tag(find_accepted);
            }
            if (leaves_bytes_out()) {
                patches_.reset();
                plan_.fits = false;
                plan_.loses_stream = loses_stream_at_end(find_accepted);
            }
        });
    });
    plan_.changes_nothing = !plan_.refusal && patches_ && overwrites().empty() &&
                            (fields_.empty() || layout_.keeps_length);
}

void FileEdit::plan_record(const cMP3ID3v1& record) {
    record_ = record.plan(*subject_.file, subject_.state.length);
    const bool is_same = std::ranges::equal(record_.bytes(), record_.old_bytes());
    if (!record.is_edited() || is_same) {
        record_.kind = Id3v1Change::Kind::None;
    }
    old_content_ = with_record(*subject_.file, subject_.state.length, record_);
}

// What follows them is held in memory, so that the audio is the last range of the file.
void FileEdit::leave_bytes_out() {
    if (!leaves_bytes_out()) {
        return;
    }
    FileContent content;
    content.append(old_content_, {0, options_.left_out_from});
    content.append_owned(old_content_.read({options_.left_out_to, old_content_.size()}));
    old_content_ = std::move(content);
}

bool FileEdit::loses_stream_at_end(const FindAccepted& find_accepted) const {
    FileWindow before(*subject_.file);
    return find_accepted(before) && !has_stream(subject_.environment, subject_.name, content());
}

void FileEdit::plan_tag(const FindAccepted& find_accepted) {
    ContentFile old_file(old_content_);
    FileWindow window(old_file);
    const std::optional<AcceptedFrame> accepted = find_accepted(window);
    const std::optional<ByteRange> old_tag = find_tag_range(window, accepted).range;
    if (old_tag) {
        plan_.tag_version = read_public_tag_header(window, old_tag->begin)->version;
        plan_.tag_area = old_tag->length();
    }
    const FileContent tag = tag_of(edited_frames(
        *subject_.file, window, old_tag.value_or(ByteRange()), fields_, options_, plan_));
    if (sets_nothing_ && !(old_tag && has_work(window, *old_tag))) {
        fields_.clear();
        EditPlan without_tag;
        without_tag.without_common_form = std::move(plan_.without_common_form);
        if (options_.common_form) {
            without_tag.oversized = std::move(plan_.oversized);
        }
        plan_ = std::move(without_tag);
        return;
    }
    plan_.needed_length = tag.size();
    lay_out_tag(old_tag, tag);
    require_tag_length(layout_.tag.size());
    layout_.require_addressable();
    patches_ = layout_.keeps_length ? patches_in_place() : std::vector<Patch>();
    plan_.fits = layout_.keeps_length && patches_;
    plan_.loses_stream = loses_stream(subject_.environment, subject_.name, layout_, accepted);
}

bool FileEdit::has_work(FileWindow& window, const ByteRange& old_tag) const {
    const auto changes = [&](const EditedFrame& frame) {
        const bool has_other_form =
            frame.fate == FrameFate::Converted || frame.fate == FrameFate::Moved;
        return frame.fate == FrameFate::Removed || (options_.common_form && has_other_form);
    };
    if (std::any_of(plan_.frames.begin(), plan_.frames.end(), changes) ||
        !plan_.rewritten.empty()) {
        return true;
    }
    if (!options_.common_form) {
        return false;
    }
    const PublicTagHeader header = *read_public_tag_header(window, old_tag.begin);
    const bool is_alone = read_public_tags(window, old_tag).size() == 1;
    return header.version != kWrittenVersion || header.flags != 0 || !is_alone;
}

// What is no part of the old tag stays: in its place where the new tag fits into the old one's,
// else after the new one.
void FileEdit::lay_out_tag(const std::optional<ByteRange>& old_tag, const FileContent& tag) {
    if (old_tag) {
        // Hosts count a tag's bytes from the start of the file, and leave that many at its end out.
        const bool fits = tag.size() + old_tag->begin < old_tag->length();
        if (fits) {
            TagArea area;
            area.position = old_tag->begin;
            area.length = old_tag->length();
            layout_ = lay_out(old_content_, area, tag);
        }
        if (fits && layout_.keeps_length) {
            return;
        }
    }
    const ByteRange gone = old_tag.value_or(ByteRange());
    FileContent rest;
    rest.append(old_content_, {0, gone.begin});
    rest.append(old_content_, {gone.end, old_content_.size()});
    layout_ = lay_out(rest, TagArea(), tag);
    layout_.shift -= gone.length();
}

std::optional<std::vector<FileEdit::Patch>> FileEdit::patches_in_place() const {
    constexpr std::int64_t kBlock = std::int64_t{64} * 1024;
    constexpr std::size_t kMaxHeld = std::size_t{1024} * 1024;
    std::vector<Patch> patches;
    std::size_t held = 0;
    for (const FileContent::Part& part :
         layout_.tag.parts_apart_from(*subject_.file, layout_.tag_position)) {
        if (part.is_of_file && std::cmp_greater(part.range.length(), kMaxBodyInMemory)) {
            return std::nullopt;
        }
        for (std::int64_t begin = part.range.begin; begin < part.range.end; begin += kBlock) {
            const std::int64_t end = std::min(begin + kBlock, part.range.end);
            const std::int64_t offset = layout_.tag_position + begin;
            Patch patch{offset, layout_.tag.read({begin, end}),
                        old_content_.read({offset, offset + end - begin})};
            if (patch.bytes != patch.old_bytes) {
                held += patch.bytes.size();
                patches.push_back(std::move(patch));
            }
            if (held > kMaxHeld) {
                return std::nullopt;
            }
        }
    }
    return patches;
}

std::vector<Overwrite> FileEdit::overwrites() const {
    std::vector<Overwrite> changes;
    if (record_.kind != Id3v1Change::Kind::None) {
        changes.push_back({record_.offset, record_.bytes(), record_.old_bytes()});
    }
    for (const Patch& patch : *patches_) {
        changes.push_back({patch.offset, patch.bytes, patch.old_bytes});
    }
    return changes;
}

TagFacts FileEdit::facts() const {
    ContentFile file(content());
    FileWindow window(file);
    if (fields_.empty()) {
        const auto accepted = find_stream(subject_.environment, subject_.name, window);
        return read_facts(window, find_tag_range(window, accepted).range_or_empty());
    }
    const std::int64_t end = layout_.tag_position + layout_.tag.size();
    return read_facts(window, {layout_.tag_position, end});
}

NewContent FileEdit::new_content() const {
    return as_writer([&] { return content().around_last_range_of(*subject_.file); });
}

void FileEdit::save(const SaveOptions& options) {
    if (plan_.refusal) {
        throw Error(*plan_.refusal);
    }
    if (plan_.changes_nothing) {
        return;
    }
    FileSystem& files = subject_.environment.files;
    const FileToChange target{files,          subject_.name, *subject_.file,
                              subject_.state, options,       subject_.host};
    // Without a new tag the file keeps its length, too, or grows by a record.
    const bool is_in_place = patches_ && (fields_.empty() || layout_.keeps_length);
    const std::vector<Overwrite> changes = is_in_place ? overwrites() : std::vector<Overwrite>();
    if (is_in_place && !options.atomic) {
        target.announce_content(layout_.content);
        target.announce(SaveWay::InPlace);
        const auto writable =
            as_reader([&] { return files.open(subject_.name, OpenMode::ReadWrite); });
        as_writer([&] { overwrite_file(*writable, subject_.state, changes); });
        return;
    }
    as_reader([&] { files.require_writable(subject_.name); });
    as_writer([&] { replace_with(target, layout_.content, changes); });
}

}  // namespace brindle
