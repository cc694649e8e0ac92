// What can be wrong with a file that is to go on air.
#pragma once

#include <string>
#include <vector>

namespace brindle::host {

enum class Verdict { Ok, Warn, Bad };

[[nodiscard]] const char* word(Verdict verdict);

enum class Reason {
    NoStream,
    CorruptTag,
    DeadAir,
    EndCutOff,
    CueInBeyondEnd,
    IntroBeyondEnd,
    OutroBeyondEnd,
    PointsOutOfOrder,
    JunkBeforeAudio,
    JunkBetweenFrames,
    CutLastFrame,
    DuplicateTag,
    TagLargerThanFile,
    NoTitle,
    NoArtist,
    MisreadText,
    UnreadText,
    LargePicture,
};

struct ReasonRow {
    Reason reason;
    Verdict verdict;      // of a file with nothing worse
    const char* code;     // never changes: programs compare it
    const char* meaning;  // for the list of codes
};

// The one table of codes, worst first, in the order of Reason.
[[nodiscard]] const std::vector<ReasonRow>& reason_table();
[[nodiscard]] const ReasonRow& row_of(Reason reason);

// A reason and the numbers that go with it.
struct Finding {
    Reason reason;
    std::string text;
};

// The worst of all.
[[nodiscard]] Verdict verdict_of(const std::vector<Finding>& findings);

}  // namespace brindle::host
