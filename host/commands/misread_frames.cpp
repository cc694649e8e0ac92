#include "commands/misread_frames.h"

#include <algorithm>

#include <brindle/save_plan.h>

#include "output/printable_text.h"
#include "output/save_text.h"
#include "output/tag_reading.h"

namespace brindle::host {

namespace {

constexpr std::int32_t kVersion2 = 2;

bool is_text(const String& id) {
    const auto is_one_of = [&](std::initializer_list<const char16_t*> ids) {
        return std::any_of(ids.begin(), ids.end(), [&](const char16_t* one) { return id == one; });
    };
    return !id.empty() && (id[0] == u'T' || id[0] == u'W' ||
                           is_one_of({u"COMM", u"USLT", u"IPLS", u"COM", u"ULT", u"IPL"}));
}

// The encoding byte of a text that is not 8-bit, left in place by the version 2 reader.
bool begins_with_encoding(const String& value) {
    constexpr char16_t kUtf16 = 1;
    constexpr char16_t kUtf8 = 3;
    return !value.empty() && value[0] >= kUtf16 && value[0] <= kUtf8;
}

// A save of version 2 drops most frames, with any text; so the values themselves are
// compared.
std::vector<std::string> misread_texts_of_version2(const cMPEGHeader& header) {
    std::vector<std::string> labels;
    for (const String& id : tag_frame_ids(header)) {
        const std::int32_t count = is_picture(id) ? 0 : header.TagsInFrame(id);
        for (std::int32_t i = 1; i <= count; ++i) {
            if (begins_with_encoding(header.v2Tag(id, i))) {
                labels.push_back((id.empty() ? "unknown" : printable(id)) + ":" +
                                 std::to_string(i));
            }
        }
    }
    return labels;
}

SavePlan plan_of(const cMPEGHeader& header) {
    try {
        return plan_save(header);
    } catch (const Error& error) {
        // Above 2 GiB nothing is ever saved, and no stream is found.
        if (error.number() == static_cast<std::int32_t>(RuntimeError::Overflow)) {
            return {};
        }
        throw;
    }
}

}  // namespace

MisreadFrames find_misread_frames(const cMPEGHeader& header) {
    MisreadFrames found;
    const SavePlan plan = plan_of(header);
    if (plan.tag_version == kVersion2) {
        found.misread_texts = misread_texts_of_version2(header);
        return found;
    }
    for (const ChangedFrame& frame : plan.changes) {
        if (is_text(frame.id) && !frame.same_text) {
            found.misread_texts.push_back(frame_label(frame));
        }
    }
    for (const LostFrame& frame : plan.losses) {
        if (frame.reason == LossReason::NotWritten) {
            continue;  // it is read
        }
        if (is_text(frame.id)) {
            found.unread_texts.push_back(frame_label(frame));
        } else if (is_picture(frame.id) && frame.reason == LossReason::TooLarge) {
            found.large_pictures.push_back(frame_label(frame));
        }
    }
    return found;
}

}  // namespace brindle::host
