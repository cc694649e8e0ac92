// The members of cMP3ID3v2 for what the public documents make of its file: edits and facts.
#include <algorithm>
#include <iterator>
#include <string>
#include <utility>

#include "id3v2/cMP3ID3v2.h"
#include "id3v2/custom_field_names.h"
#include "id3v2/error_sources.h"
#include "id3v2/fact_reader.h"
#include "id3v2/file_edit.h"
#include "id3v2/tag_range.h"
#include "util/code_page.h"
#include "util/numeric_text.h"

namespace brindle {

std::unique_ptr<FileEdit> cMP3ID3v2::begin_edit(const EditOptions& options) const {
    std::unique_ptr<BinaryFile> file = open_for_saving();
    if (!file) {
        throw Error(RuntimeError::FileNotFound, kReaderSource);
    }
    if (fault_) {
        throw fault_->from(kWriterSource);
    }
    const FileState state = as_writer([&] { return file->state(); });
    const auto find_accepted = [this](FileWindow& window) { return accepted_in(window); };
    return std::make_unique<FileEdit>(
        FileToEdit{environment_, file_name_, Owner, std::move(file), state}, find_accepted, v1_,
        edited_fields(), options);
}

std::vector<EditedField> cMP3ID3v2::edited_fields() const {
    std::vector<EditedField> fields;
    const auto add = [&](const SetValue& value) {
        std::string id;
        std::transform(value.id.begin(), value.id.end(), std::back_inserter(id),
                       [](char16_t unit) { return static_cast<char>(narrow(unit)); });
        // The name of a genre that was there belongs to the number that was there.
        const bool is_genre = value.id == row_of(StandardField::OtherGenreName).frame_id;
        fields.push_back({std::move(id), value.custom_name,
                          is_genre ? u"(" + to_text(std::int32_t{Genre()}) + u")" : value.held});
    };
    std::for_each(edited_.begin(), edited_.end(), add);
    const bool has_stamp = std::any_of(edited_.begin(), edited_.end(), [](const SetValue& value) {
        return value.custom_name == kSavedStampName;
    });
    if (!fields.empty() && !has_stamp) {
        add({String(kCustomFrame), kSavedStampName,
             kSavedStampName + kSeparator + kSavedStampValue});
    }
    return fields;
}

TagFacts cMP3ID3v2::read_tag_facts() const {
    const std::unique_ptr<BinaryFile> file = open_to_plan();
    if (!file) {
        return {};
    }
    return as_writer([&] {
        FileWindow window(*file);
        const auto range = find_tag_range(window, accepted_in(window));
        return read_facts(*file, window, range.value_or(ByteRange()));
    });
}

void cMP3ID3v2::read_content(const String& name, const FileContent& content) {
    initialise();
    keep_name(name);
    ContentFile file(content);
    FileWindow window(file);
    read(window);
}

}  // namespace brindle
