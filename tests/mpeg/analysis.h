// A file in memory and an analyser over it.
#pragma once

#include "mpeg/clsMPEG.h"
#include "support/bytes.h"
#include "support/memory_environment.h"

namespace brindle::test {

inline const String kName = u"song.mp3";

struct Analysis {
    MemoryEnvironment world;
    clsMPEG analyser{world.environment};

    explicit Analysis(const Bytes& file) { world.files.put(kName, file); }

    Analysis& tag(std::int32_t length, std::int32_t offset = 0) {
        analyser.ID3v2Length = length;
        analyser.ID3v2Offset = offset;
        return *this;
    }
    Analysis& with_v1() {
        analyser.HasV1Tag = true;
        return *this;
    }
    clsMPEG& run() {
        analyser.FileName(kName);
        return analyser;
    }
    [[nodiscard]] bool found() const { return analyser.FileName() == kName; }
};

}  // namespace brindle::test
