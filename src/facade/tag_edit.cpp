#include <algorithm>
#include <iterator>
#include <utility>

#include <brindle/cMPEGHeader.h>
#include <brindle/tag_edit.h>

#include "id3v2/cMP3ID3v2.h"
#include "id3v2/error_sources.h"
#include "id3v2/file_edit.h"

namespace brindle {

struct TagEdit::State {
    std::unique_ptr<FileEdit> edit;
};

std::vector<EditedFrame> EditPlan::losses() const {
    std::vector<EditedFrame> lost;
    std::copy_if(frames.begin(), frames.end(), std::back_inserter(lost),
                 [](const EditedFrame& frame) { return frame.fate == FrameFate::Lost; });
    return lost;
}

TagEdit::TagEdit(const cMPEGHeader& header, const EditOptions& options)
    : state_(std::make_unique<State>()) {
    if (!header.model_ || !header.model_->has_file()) {
        throw Error(kFileNameNotSet);
    }
    state_->edit = with_writer_memory([&] { return header.model_->begin_edit(options); });
}

TagEdit::TagEdit(TagEdit&& other) noexcept = default;
TagEdit& TagEdit::operator=(TagEdit&& other) noexcept = default;
TagEdit::~TagEdit() = default;

const EditPlan& TagEdit::plan() const {
    return state_->edit->plan();
}

void TagEdit::preview(cMPEGHeader& preview) const {
    preview.model_ = std::make_unique<cMP3ID3v2>(*preview.environment_);
    preview.model_->read_content(state_->edit->name(), state_->edit->content());
}

TagFacts TagEdit::facts() const {
    return with_writer_memory([&] { return state_->edit->facts(); });
}

NewContent TagEdit::content() const {
    return with_writer_memory([&] { return state_->edit->new_content(); });
}

void TagEdit::save(const SaveOptions& options) {
    with_writer_memory([&] { state_->edit->save(options); });
}

}  // namespace brindle
