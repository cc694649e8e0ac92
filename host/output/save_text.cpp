#include "output/save_text.h"

#include "output/printable_text.h"
#include "output/stream_text.h"

namespace brindle::host {

namespace {

std::string reason_text(LossReason reason) {
    switch (reason) {
        case LossReason::TooLarge:
            return "too large to be read";
        case LossReason::AfterCorrupt:
            return "after a corrupt frame";
        case LossReason::NotReached:
            return "not reached when the tag was read";
        case LossReason::Misread:
            return "in an unknown form";
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

std::string loss_text(EditLoss loss) {
    switch (loss) {
        case EditLoss::CutByTagEnd:
            return "cut by the end of the tag";
        case EditLoss::NoFrame:
            return "neither a frame nor padding";
        case EditLoss::UnknownId:
            return "of version 2.2, without an equivalent in later versions";
        case EditLoss::UnknownLength:
            return "compressed, without the length field that it needs";
    }
    return {};
}

std::string labels_text(const std::vector<TagFrame>& frames) {
    return comma_list(frames, frame_label);
}

std::string of_space(std::int64_t needed, std::int64_t space) {
    return "(" + std::to_string(needed) + " of " + std::to_string(space) + " bytes)";
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
        case FrameFate::Removed:
            return "Would be removed";
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
                          labels_text(plan.oversized) + ", which they cannot skip");
    }
    if (!plan.unseen.empty()) {
        remarks.push_back("hosts do not see " + labels_text(plan.unseen) +
                          ", which is not in 8-bit text");
    }
    if (!plan.joined.empty()) {
        remarks.push_back("joined the values of " + labels_text(plan.joined) + " with \"/\"");
    }
    if (!plan.without_common_form.empty()) {
        remarks.push_back("kept " + labels_text(plan.without_common_form) +
                          " as it is: no form of it reads the same in hosts and other programs");
    }
    return remarks;
}

std::string lost_stream_text(const std::string& way_to_force) {
    return "Hosts would find no stream in it afterwards: they look at 16,384 positions after the "
           "tag, or from the start where the tag is more than half of the file; " +
           way_to_force + " overrides this";
}

std::string how_it_fits(bool fits, std::int64_t needed, std::int64_t space) {
    const std::string needs = "the tag needs " + std::to_string(needed) + " bytes";
    if (fits) {
        return "Fits in place: " + needs + " of " + std::to_string(space);
    }
    return "Would be rebuilt: " + needs +
           (space == 0 ? ", there is none yet" : ", its place has " + std::to_string(space));
}

std::string how_it_was_written(bool is_rebuilt, std::int64_t needed, std::int64_t space) {
    if (!is_rebuilt) {
        return "written in place " + of_space(needed, space);
    }
    if (needed < space) {
        return "file rebuilt with an ID3v2 tag of the same length " + of_space(needed, space);
    }
    return "file rebuilt with a larger ID3v2 tag (" + std::to_string(needed) +
           " bytes and padding)";
}

std::string record_text(const cMPEGHeader& now, bool had_record) {
    if (!has_id3v1(now)) {
        return "no ID3v1 record (the file is too short for one)";
    }
    return had_record ? "ID3v1 record overwritten" : "ID3v1 record appended";
}

std::string unseen_tag_text(const cMPEGHeader& now) {
    return has_id3v2(now) ? ""
                          : "; hosts will not find the tag: they look for one in files of 4,098 "
                            "bytes or more";
}

std::string remarks_text(const std::vector<std::string>& remarks) {
    std::string text;
    for (const std::string& remark : remarks) {
        text += "; " + remark;
    }
    return text;
}

}  // namespace brindle::host
