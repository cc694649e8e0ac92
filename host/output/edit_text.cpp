#include "output/edit_text.h"

#include "output/comma_list.h"
#include "output/plan_text.h"

namespace brindle::host {

namespace {

std::string loss_text(EditLoss loss) {
    switch (loss) {
        case EditLoss::CutByTagEnd:
            return "cut by the end of the tag";
        case EditLoss::NoFrame:
            return "no frame and no padding";
        case EditLoss::UnknownId:
            return "of version 2.2, without a frame of later versions in its place";
        case EditLoss::UnknownLength:
            return "compressed, without the length that it should tell";
    }
    return {};
}

std::string labels_text(const std::vector<TagFrame>& frames) {
    return comma_list(frames, frame_label);
}

}  // namespace

std::string remark_on(const EditedFrame& frame) {
    const std::string size = std::to_string(frame.size) + " bytes";
    return frame.loss ? size + ", " + loss_text(*frame.loss) : size;
}

std::string fate_text(FrameFate fate) {
    switch (fate) {
        case FrameFate::Kept:
            return "Would be kept";
        case FrameFate::Moved:
            return "Would be moved after the others";
        case FrameFate::Converted:
            return "Would be converted";
        case FrameFate::Changed:
            return "Would be replaced";
        case FrameFate::Lost:
            return "Would be lost";
    }
    return {};
}

std::string losses_text(const std::vector<EditedFrame>& frames) {
    return comma_list(frames, [](const EditedFrame& frame) {
        return frame.id.empty() ? remark_on(frame) : frame_text(frame);
    });
}

std::vector<std::string> remarks_on(const EditPlan& plan) {
    std::vector<std::string> remarks;
    if (!plan.duplicates.empty()) {
        remarks.push_back("replaced " + labels_text(plan.duplicates) + ", too");
    }
    if (!plan.other_cases.empty()) {
        remarks.push_back("kept " + labels_text(plan.other_cases) +
                          ", a field of its own: its name differs in upper and lower case");
    }
    if (!plan.oversized.empty()) {
        remarks.push_back("hosts read title and artist as \"Corrupt ID3v2 Tag...\" because of " +
                          labels_text(plan.oversized) + ", which they cannot step over");
    }
    if (!plan.unseen.empty()) {
        remarks.push_back("hosts do not see " + labels_text(plan.unseen) +
                          ", which is not in 8-bit text");
    }
    return remarks;
}

}  // namespace brindle::host
