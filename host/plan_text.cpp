#include "plan_text.h"

#include "printable_text.h"

namespace brindle::host {

namespace {

std::string reason_text(LossReason reason) {
    switch (reason) {
        case LossReason::TooLarge:
            return "too large to be read";
        case LossReason::BehindCorrupt:
            return "behind a corrupt frame";
        case LossReason::NotReached:
            return "not reached when the tag was read";
        case LossReason::Misread:
            return "in a form that is not understood";
        case LossReason::Version2:
            return "dropped by the conversion of the version 2 tag";
        case LossReason::NotWritten:
            return "left out when the tag is written";
    }
    return {};
}

std::string frame_text(const TagFrame& frame, const std::string& remark) {
    std::string text = printable(frame.id) + ":" + std::to_string(frame.number);
    if (!frame.name.empty()) {
        text += " \"" + printable(frame.name) + "\"";
    }
    return text + " (" + std::to_string(frame.size) + " bytes, " + remark + ")";
}

}  // namespace

std::string loss_text(const LostFrame& frame) {
    return frame_text(frame, reason_text(frame.reason));
}

std::string losses_text(const std::vector<LostFrame>& frames) {
    std::string text;
    for (const LostFrame& frame : frames) {
        text += (text.empty() ? "" : ", ") + loss_text(frame);
    }
    return text;
}

std::string change_text(const ChangedFrame& frame) {
    return frame_text(frame, frame.same_text ? "same text in another form" : "with other content");
}

}  // namespace brindle::host
