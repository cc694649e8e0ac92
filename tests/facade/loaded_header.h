// A facade over files in memory.
#pragma once

#include <brindle/cMPEGHeader.h>

#include "support/bytes.h"
#include "support/frames.h"
#include "support/id3v1.h"
#include "support/memory_environment.h"
#include "support/tags.h"

namespace brindle::test {

inline const String kSong = u"song.mp3";

// 120 frames of 1,152 samples at 44,100 Hz: 3,134 ms.
inline Bytes audio() {
    return stream(Frame{}, 120);
}

struct LoadedHeader {
    LoadedHeader() = default;
    explicit LoadedHeader(const Bytes& file) { load(file); }

    void load(const Bytes& file) {
        world.files.put(kSong, file);
        header.FileName(kSong);
    }

    [[nodiscard]] MemoryFiles& files() { return world.files; }
    [[nodiscard]] const Bytes& content() const { return world.files.content(kSong); }

    MemoryEnvironment world;
    cMPEGHeader header{world.environment};
};

}  // namespace brindle::test
