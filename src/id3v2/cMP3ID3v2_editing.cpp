// The members of cMP3ID3v2 for plans, edits and facts. In a file of their own, as a program that
// calls none of them, such as the automation server, is then linked without the editor (90 KB).
#include <memory>
#include <utility>
#include <vector>

#include "id3v2/cMP3ID3v2.h"
#include "id3v2/error_sources.h"
#include "id3v2/fact_reader.h"
#include "id3v2/public_tag_reader.h"
#include "id3v2/reading_comparison.h"
#include "id3v2/save_planning.h"
#include "id3v2/tag_range.h"

namespace brindle {

namespace {

// What `read` makes of the tag as it stands in the file; an empty answer without a file.
template <typename Answer, typename Read>
Answer look(const FileReading& reading, const Read& read) {
    const std::unique_ptr<BinaryFile> file = reading.open_to_look();
    if (!file) {
        return {};
    }
    return as_writer([&] {
        FileWindow window(*file);
        return read(window, find_tag_range(window, reading.accepted_after_tag_in(window)));
    });
}

}  // namespace

SavePlan cMP3ID3v2::plan_save() const {
    return brindle::plan_save(reading_);
}

StripPlan cMP3ID3v2::plan_strip(std::int32_t tags) const {
    return brindle::plan_strip(reading_, tags);
}

std::unique_ptr<FileEdit> cMP3ID3v2::begin_edit(const EditOptions& options) const {
    std::unique_ptr<BinaryFile> file = reading_.open_to_save();
    if (!file) {
        throw Error(RuntimeError::FileNotFound, kReaderSource);
    }
    reading_.require_whole(kWriterSource);
    const FileState state = as_writer([&] { return file->state(); });
    EditOptions all = options;
    for (const String& name : reading_.tag().removed_custom_fields()) {
        all.removed.push_back({String(kCustomFrame), name});
    }
    const auto find_accepted = [this](FileWindow& window) {
        return reading_.accepted_after_tag_in(window);
    };
    return std::make_unique<FileEdit>(
        FileToEdit{reading_.environment(), reading_.name(), Owner, std::move(file), state},
        find_accepted, reading_.record, reading_.tag().edited_fields(), std::move(all));
}

TagFacts cMP3ID3v2::read_tag_facts() const {
    return look<TagFacts>(reading_, [](FileWindow& window, const FoundTag& found) {
        return read_facts(window, found.range_or_empty());
    });
}

ComparedTag cMP3ID3v2::compare_tag() const {
    return look<ComparedTag>(reading_, [this](FileWindow& window, const FoundTag& found) {
        const std::vector<PublicTag> tags = read_public_tags(window, found.range_or_empty());
        return ComparedTag{read_facts(window, found.range_or_empty(), tags),
                           hosts_read_the_same(window, found, tags, reading_.tag().frames)};
    });
}

}  // namespace brindle
