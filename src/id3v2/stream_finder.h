// The stream of a file as hosts will find it when they open it.
#pragma once

#include <cstdint>
#include <optional>

#include <brindle/values.h>

#include "mpeg/audio_start.h"
#include "mpeg/clsMPEG.h"
#include "util/environment.h"
#include "util/file_content.h"
#include "util/file_window.h"

namespace brindle {

// What the analyser has to know of a file's tags.
struct TagsAroundAudio {
    std::int32_t position = 0;  // of the first tag
    std::int32_t length = 0;    // of it and of a second one directly after it; 0 without a tag
    bool has_record = false;
};

// How much of a second tag of that length counts as tag: one of half the file does not.
[[nodiscard]] std::int32_t second_tag_length(std::int32_t length, std::int64_t file_length);

void analyse(clsMPEG& analyser, const String& name, FileWindow& file, const TagsAroundAudio& tags);

// Analyses the file without telling anybody: no event, no model.
[[nodiscard]] std::optional<AcceptedFrame> find_stream(Environment& environment, const String& name,
                                                       FileWindow& file);
// Whether hosts find one in a file of that content.
[[nodiscard]] bool has_stream(Environment& environment, const String& name,
                              const FileContent& content);
// The frame that the analyser has accepted.
[[nodiscard]] std::optional<AcceptedFrame> accepted_frame(const clsMPEG& analyser);

}  // namespace brindle
