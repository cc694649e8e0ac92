// A model over a file in memory.
#pragma once

#include <cstddef>

#include <brindle/values.h>

#include "id3v2/cMP3ID3v2.h"
#include "support/bytes.h"
#include "support/frames.h"
#include "support/memory_environment.h"
#include "support/tags.h"

namespace brindle::test {

inline const String kSong = u"song.mp3";

// Audio that is accepted: more frames than confirmations are asked for.
inline Bytes audio() {
    return stream(Frame{}, 120);
}

struct OpenedModel {
    OpenedModel() = default;
    explicit OpenedModel(const Bytes& file) { open(file); }

    void open(const Bytes& file) {
        world.files.put(kSong, file);
        model.FileName(kSong);
    }

    MemoryEnvironment world;
    cMP3ID3v2 model{world.environment};
};

}  // namespace brindle::test
