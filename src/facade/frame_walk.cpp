#include <brindle/cMPEGHeader.h>
#include <brindle/frame_walk.h>

#include "id3v2/cMP3ID3v2.h"

namespace brindle {

FrameWalk walk_frames(const cMPEGHeader& header) {
    return walk_frames(header, FrameVisitor());
}

FrameWalk walk_frames(const cMPEGHeader& header, const FrameVisitor& visit) {
    return header.model_ ? header.model_->walk_frames(visit) : FrameWalk{};
}

}  // namespace brindle
