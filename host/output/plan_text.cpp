#include "output/plan_text.h"

#include "output/comma_list.h"
#include "output/printable_text.h"

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

std::string size_text(const TagFrame& frame) {
    return std::to_string(frame.size) + " bytes, ";
}

}  // namespace

std::string frame_label(const TagFrame& frame) {
    const std::string place = printable(frame.id) + ":" + std::to_string(frame.number);
    return frame.name.empty() ? place : place + " \"" + printable(frame.name) + "\"";
}

std::string remark_on(const LostFrame& frame) {
    return size_text(frame) + reason_text(frame.reason);
}

std::string remark_on(const ChangedFrame& frame) {
    return size_text(frame) +
           (frame.same_text ? "same text in another form" : "with other content");
}

std::string losses_text(const std::vector<LostFrame>& frames) {
    return comma_list(frames, frame_text<LostFrame>);
}

}  // namespace brindle::host
