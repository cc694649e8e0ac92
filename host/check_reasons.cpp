#include "check_reasons.h"

#include <algorithm>

namespace brindle::host {

const char* word(Verdict verdict) {
    switch (verdict) {
        case Verdict::Ok:
            return "ok";
        case Verdict::Warn:
            return "warn";
        case Verdict::Bad:
            return "bad";
    }
    return "";
}

const std::vector<ReasonRow>& reason_table() {
    using R = Reason;
    constexpr Verdict kBad = Verdict::Bad;
    constexpr Verdict kWarn = Verdict::Warn;
    // clang-format off
    static const std::vector<ReasonRow> kTable = {
        {R::NoStream,          kBad,  "no-stream",            "No MPEG audio was found"},
        {R::CorruptTag,        kBad,  "corrupt-tag",          "Reading the ID3v2 tag ended at a frame that can't be right"},
        {R::DeadAir,           kBad,  "dead-air",             "The file promises more than it plays"},
        {R::EndCutOff,         kBad,  "end-cut-off",          "The file plays more than it promises"},
        {R::CueInBeyondEnd,    kBad,  "cue-in-beyond-end",    "The cue-in point lies behind the last sound"},
        {R::IntroBeyondEnd,    kBad,  "intro-beyond-end",     "The intro point lies behind the last sound"},
        {R::OutroBeyondEnd,    kBad,  "outro-beyond-end",     "The outro point lies behind the last sound"},
        {R::PointsOutOfOrder,  kWarn, "points-out-of-order",  "Not in the order cue-in, intro, outro, or before the beginning"},
        {R::JunkBeforeAudio,   kWarn, "junk-before-audio",    "Audio does not begin where the tag ends"},
        {R::JunkBetweenFrames, kWarn, "junk-between-frames",  "Bytes that are no audio stand between frames"},
        {R::CutLastFrame,      kWarn, "cut-last-frame",       "The file ends inside a frame"},
        {R::DuplicateTag,      kWarn, "duplicate-tag",        "A second ID3v2 tag follows the first"},
        {R::TagLargerThanFile, kWarn, "tag-larger-than-file", "The ID3v2 tag claims more bytes than the file has"},
        {R::NoTitle,           kWarn, "no-title",             "Neither tag has a title"},
        {R::NoArtist,          kWarn, "no-artist",            "Neither tag has an artist"},
        {R::MisreadText,       kWarn, "misread-text",         "Hosts read another text, as of UTF-8 and UTF-16"},
        {R::UnreadText,        kWarn, "unread-text",          "Hosts do not read the text, as above 5,000 bytes"},
        {R::LargePicture,      kWarn, "large-picture",        "Hosts do not read the picture: above 81,920 bytes"},
    };
    // clang-format on
    return kTable;
}

const ReasonRow& row_of(Reason reason) {
    return reason_table()[static_cast<std::size_t>(reason)];
}

Verdict verdict_of(const std::vector<Finding>& findings) {
    Verdict worst = Verdict::Ok;
    for (const Finding& finding : findings) {
        worst = std::max(worst, row_of(finding.reason).verdict);
    }
    return worst;
}

}  // namespace brindle::host
