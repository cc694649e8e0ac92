#include "output/audio_hash.h"

#include <cstdint>
#include <vector>

#include <brindle/error.h>
#include <brindle/frame_walk.h>

#include "system/sha256.h"

namespace brindle::host {

std::string audio_hash(InputFile& file) {
    Sha256 hash;
    const FrameWalk walk =
        walk_frames(file.header(), [&](const WalkedFrame& frame) { hash.add(frame.bytes); });
    if (walk.samples_per_frame == 0) {
        return "";
    }
    if (walk.last_frame_is_cut) {
        // Shorter than a frame.
        const auto count = static_cast<std::size_t>(walk.bytes_after);
        const std::string rest = file.read(walk.end, count);
        if (rest.size() < count) {
            throw Error(RuntimeError::InputPastEnd, u"brindle");
        }
        hash.add(std::vector<std::uint8_t>(rest.begin(), rest.end()));
    }
    return hash.digits();
}

}  // namespace brindle::host
