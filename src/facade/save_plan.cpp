#include <brindle/cMPEGHeader.h>
#include <brindle/save_plan.h>

#include "id3v2/cMP3ID3v2.h"

namespace brindle {

SavePlan plan_save(const cMPEGHeader& header) {
    return header.model_ ? header.model_->plan_save() : SavePlan{};
}

StripPlan plan_strip(const cMPEGHeader& header, eTagType eTagTypes) {
    return header.model_ ? header.model_->plan_strip(eTagTypes) : StripPlan{};
}

}  // namespace brindle
