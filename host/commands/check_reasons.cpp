#include "commands/check_reasons.h"

#include <algorithm>

namespace brindle::host {

const char* word(Verdict verdict) {
    switch (verdict) {
        case Verdict::Ok:
            return "ok";
        case Verdict::Note:
            return "note";
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
    constexpr Verdict kNote = Verdict::Note;
    // clang-format off
    static const std::vector<ReasonRow> kTable = {
        {R::NoStream,          kBad,  "no-stream",            "No MPEG audio was found"},
        {R::NotPlayableByHosts, kBad, "not-playable-by-hosts", "Other players play it, hosts find no stream: the text tells why and what helps"},
        {R::FreeFormat,        kBad,  "free-format",          "Hosts do not play frames in free format: encode at a standard bit rate"},
        {R::DeadAir,           kBad,  "dead-air",             "The file promises more than it plays"},
        {R::AudioMissing,      kBad,  "audio-missing",        "The encoder counted at least two frames more: the file was cut"},
        {R::EndCutOff,         kBad,  "end-cut-off",          "The file plays more than it promises"},
        {R::FrameCrc,          kBad,  "frame-crc",            "The checksum of 1 % of the frames or more is wrong: fetch the file again"},
        {R::ChangingFormat,    kBad,  "changing-format",      "Version, layer or frequency change on the way: encode again in one format"},
        {R::CueInBeyondEnd,    kBad,  "cue-in-beyond-end",    "The cue-in point lies after the last sound"},
        {R::IntroBeyondEnd,    kBad,  "intro-beyond-end",     "The intro point lies after the last sound"},
        {R::OutroBeyondEnd,    kBad,  "outro-beyond-end",     "The outro point lies after the last sound"},
        {R::CorruptTag,        kWarn, "corrupt-tag",          "Hosts cannot read the ID3v2 tag to its end: remove or shrink the frame"},
        {R::PointsOutOfOrder,  kWarn, "points-out-of-order",  "Not in the order cue-in, intro, outro, or before the beginning"},
        {R::PointsDisagree,    kWarn, "points-disagree",      "Another program's field has another point in time: set the one that is wrong"},
        {R::DecodeError,       kWarn, "decode-error",         "With --listen: frames that no decoder can play: fetch the file again"},
        {R::ChannelMissing,    kWarn, "channel-missing",      "With --listen: one side is silent, or both are out of phase: encode again"},
        {R::CueInInSilence,    kWarn, "cue-in-in-silence",    "With --listen: nothing is heard for a while from the cue-in on: set it again"},
        {R::SilentStart,       kWarn, "silent-start",         "With --listen: the file begins with silence, and no cue-in leaves it out"},
        {R::SilenceInside,     kWarn, "silence-inside",       "With --listen: it is silent for a while on the way: cut that out"},
        {R::SilentEnd,         kWarn, "silent-end",           "With --listen: the file ends with silence, and no secondary tone leaves it out"},
        {R::JunkBeforeAudio,   kWarn, "junk-before-audio",    "Audio does not begin where the tag ends"},
        {R::JunkBetweenFrames, kWarn, "junk-between-frames",  "Bytes that are no audio stand between frames"},
        {R::JunkAfterAudio,    kWarn, "junk-after-audio",     "Bytes that are no audio and no known tag follow the last frame"},
        {R::CutLastFrame,      kWarn, "cut-last-frame",       "The file ends inside a frame"},
        {R::FewFrameCrc,       kWarn, "frame-crc",            "The checksum of fewer frames is wrong: fetch the file again"},
        {R::Wrapped,           kWarn, "wrapped",              "The audio is inside a RIFF file: take it out"},
        {R::TagLargerThanFile, kWarn, "tag-larger-than-file", "The ID3v2 tag claims more bytes than the file has"},
        {R::MisreadText,       kWarn, "misread-text",         "Hosts read another text, as of UTF-8 and UTF-16"},
        {R::UnreadText,        kWarn, "unread-text",          "Hosts do not read the text, as above 5,000 bytes"},
        {R::LargePicture,      kWarn, "large-picture",        "Hosts do not read the picture: above 81,920 bytes"},
        {R::Mojibake,          kWarn, "mojibake",             "Text was stored in an encoding that it is not read in: set it again"},
        {R::HeaderMismatch,    kNote, "header-mismatch",      "The encoder counted other frames than there are"},
        {R::ChangingMode,      kNote, "changing-format",      "The channel mode changes on the way: nothing to do"},
        {R::Clipped,           kNote, "clipped",              "With --listen: samples stay at full scale: take a source of lower level"},
        {R::TooLoud,           kNote, "too-loud",             "With --listen: louder than the limit: let players lower it"},
        {R::TooQuiet,          kNote, "too-quiet",            "With --listen: softer than the limit: let players raise it"},
        {R::DuplicateTag,      kNote, "duplicate-tag",        "A second ID3v2 tag follows the first"},
        {R::NoTitle,           kNote, "no-title",             "Neither tag has a title"},
        {R::NoArtist,          kNote, "no-artist",            "Neither tag has an artist"},
        {R::TagsDisagree,      kNote, "tags-disagree",        "ID3v1 and ID3v2 differ in title, artist, album or year: set it again"},
        {R::BadPicture,        kNote, "bad-picture",          "A picture is no image by its first bytes: remove it or put it in again"},
        {R::ApeTag,            kNote, "apev2-tag",            "There is an APEv2 tag, which hosts do not read"},
        {R::Lyrics3Tag,        kNote, "lyrics3-tag",          "There is a Lyrics3 tag, which hosts do not read"},
        {R::SecondRecord,      kNote, "second-id3v1",         "Two ID3v1 records follow each other"},
        {R::Leftover,          kNote, "leftover",             "A temporary file of brindle, left by a power cut: remove it"},
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
    return worst == Verdict::Note ? Verdict::Ok : worst;
}

}  // namespace brindle::host
