// The faults of a file that is to go on air.
#pragma once

#include <string>
#include <vector>

namespace brindle::host {

// Bad: listeners hear it, or a host cannot play the file. Warn: a host shows something
// wrong. Note: all else; it leaves the file's verdict ok.
enum class Verdict { Ok, Note, Warn, Bad };

[[nodiscard]] const char* word(Verdict verdict);

enum class Reason {
    NoStream,
    NotPlayableByHosts,
    FreeFormat,
    DeadAir,
    AudioMissing,
    EndCutOff,
    FrameCrc,
    ChangingFormat,
    CueInBeyondEnd,
    IntroBeyondEnd,
    OutroBeyondEnd,
    CorruptTag,
    PointsOutOfOrder,
    PointsDisagree,
    DecodeError,
    ChannelMissing,
    CueInInSilence,
    SilentStart,
    SilenceInside,
    SilentEnd,
    JunkBeforeAudio,
    JunkBetweenFrames,
    JunkAfterAudio,
    CutLastFrame,
    FewFrameCrc,
    Wrapped,
    TagLargerThanFile,
    MisreadText,
    UnreadText,
    LargePicture,
    Mojibake,
    HeaderMismatch,
    ChangingMode,
    Clipped,
    TooLoud,
    TooQuiet,
    DuplicateTag,
    NoTitle,
    NoArtist,
    TagsDisagree,
    BadPicture,
    ApeTag,
    Lyrics3Tag,
    SecondRecord,
    Leftover,
};

struct ReasonRow {
    Reason reason;
    Verdict verdict;      // of a file with nothing worse; a note leaves it ok
    const char* code;     // never changes: programs compare it; some have two verdicts
    const char* meaning;  // for the list of codes
    const char* remedy;   // what to do about it
};

// The one table of codes, worst first, in the order of Reason.
[[nodiscard]] const std::vector<ReasonRow>& reason_table();
[[nodiscard]] const ReasonRow& row_of(Reason reason);

// A reason and the numbers that go with it.
struct Finding {
    Reason reason;
    std::string text;
    std::string remedy = {};  // of this file; when empty that of the table
};

// What was found, and what to do about it.
[[nodiscard]] std::string text_of(const Finding& finding);

// The worst of all: ok, warn or bad.
[[nodiscard]] Verdict verdict_of(const std::vector<Finding>& findings);

}  // namespace brindle::host
