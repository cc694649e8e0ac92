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
        {R::NoStream,          kBad,  "no-stream",             "No MPEG audio was found",
         "fetch the file again from its source"},
        {R::NotPlayableByHosts,kBad,  "not-playable-by-hosts", "Other players play the file, but hosts find no stream",
         "the text gives the cause and the remedy"},
        {R::FreeFormat,        kBad,  "free-format",           "Frames in free format, which hosts do not play",
         "encode the file again at a bit rate of the standard"},
        {R::DeadAir,           kBad,  "dead-air",              "The file promises more than it plays",
         "fetch the file again, or encode it again"},
        {R::AudioMissing,      kBad,  "audio-missing",         "The encoder counted at least two frames more than there are",
         "fetch the file again from its source"},
        {R::EndCutOff,         kBad,  "end-cut-off",           "The file plays more than it promises",
         "encode the file again"},
        {R::FrameCrc,          kBad,  "frame-crc",             "The checksum of 1 % of the frames or more is wrong",
         "fetch the file again from its source"},
        {R::ChangingFormat,    kBad,  "changing-format",       "Version, layer or frequency change inside the file",
         "encode the file again in one format"},
        {R::CueInBeyondEnd,    kBad,  "cue-in-beyond-end",     "The cue-in point lies after the end of the audio",
         "set it again"},
        {R::IntroBeyondEnd,    kBad,  "intro-beyond-end",      "The intro point lies after the end of the audio",
         "set it again"},
        {R::OutroBeyondEnd,    kBad,  "outro-beyond-end",      "The outro point lies after the end of the audio",
         "set it again"},
        {R::CorruptTag,        kWarn, "corrupt-tag",           "Hosts cannot read the ID3v2 tag to its end",
         "remove or shrink the frame they stop at"},
        {R::PointsOutOfOrder,  kWarn, "points-out-of-order",   "Points are not in the order cue-in, intro, outro, or are before the beginning",
         "set the one that is wrong"},
        {R::PointsDisagree,    kWarn, "points-disagree",       "A field of another program gives a different time",
         "set the one that is wrong"},
        {R::DecodeError,       kWarn, "decode-error",          "With --listen: frames that cannot be decoded",
         "fetch the file again from its source"},
        {R::ChannelMissing,    kWarn, "channel-missing",       "With --listen: one channel is silent, or both are out of phase",
         "encode the source again"},
        {R::CueInInSilence,    kWarn, "cue-in-in-silence",     "With --listen: a long silence follows the cue-in point",
         "set --cue-in"},
        {R::SilentStart,       kWarn, "silent-start",          "With --listen: the file begins with silence, and no cue-in skips it",
         "set --cue-in"},
        {R::SilenceInside,     kWarn, "silence-inside",        "With --listen: a long silence inside the sound",
         "cut it out, or set --sectone to where it begins"},
        {R::SilentEnd,         kWarn, "silent-end",            "With --listen: the file ends with silence, and no secondary tone skips it",
         "set --sectone"},
        {R::JunkBeforeAudio,   kWarn, "junk-before-audio",     "Audio does not begin where the tag ends",
         "fetch the file again, or encode it again"},
        {R::JunkBetweenFrames, kWarn, "junk-between-frames",   "There are bytes between frames that are not audio",
         "fetch the file again, or encode it again"},
        {R::JunkAfterAudio,    kWarn, "junk-after-audio",      "After the last frame there are bytes that are neither audio nor a known tag",
         "fetch the file again, or encode it again"},
        {R::CutLastFrame,      kWarn, "cut-last-frame",        "The file ends inside a frame",
         "fetch the file again if its end is missing"},
        {R::FewFrameCrc,       kWarn, "frame-crc",             "The checksum of fewer frames is wrong",
         "fetch the file again from its source"},
        {R::Wrapped,           kWarn, "wrapped",               "The audio is inside a RIFF file",
         "extract the audio"},
        {R::TagLargerThanFile, kWarn, "tag-larger-than-file",  "The ID3v2 tag claims more bytes than the file has",
         "fetch the file again from its source"},
        {R::MisreadText,       kWarn, "misread-text",          "Hosts read another text, for example of UTF-8 or UTF-16",
         "brindle normalize writes a form that all programs read"},
        {R::UnreadText,        kWarn, "unread-text",           "Hosts do not read the text, for example above 5,000 bytes",
         "shorten it"},
        {R::LargePicture,      kWarn, "large-picture",         "Hosts do not read the picture: above 81,920 bytes",
         "brindle normalize --pictures shrink makes it small enough"},
        {R::Mojibake,          kWarn, "mojibake",              "The encoding of a text is not the one that the tag gives",
         "set these texts again, or brindle normalize --repair-text"},
        {R::HeaderMismatch,    kNote, "header-mismatch",       "The frames or bytes that the encoder counted are not those of the file",
         "nothing to do if the end is complete"},
        {R::ChangingMode,      kNote, "changing-format",       "The channel mode changes inside the file",
         "nothing to do"},
        {R::Clipped,           kNote, "clipped",               "With --listen: several samples in a row at full scale",
         "use a source with a lower level"},
        {R::TooLoud,           kNote, "too-loud",              "With --listen: louder than the limit",
         "brindle listen --set loudness writes the gain that players apply"},
        {R::TooQuiet,          kNote, "too-quiet",             "With --listen: softer than the limit",
         "brindle listen --set loudness writes the gain that players apply"},
        {R::DuplicateTag,      kNote, "duplicate-tag",         "A second ID3v2 tag follows the first",
         "nothing to do: players read the first"},
        {R::NoTitle,           kNote, "no-title",              "Neither tag has a title",
         "set --title"},
        {R::NoArtist,          kNote, "no-artist",             "Neither tag has an artist",
         "set --artist"},
        {R::TagsDisagree,      kNote, "tags-disagree",         "ID3v1 and ID3v2 differ in title, artist, album or year",
         "set it again, which writes both"},
        {R::BadPicture,        kNote, "bad-picture",           "The first bytes of a picture are not those of an image",
         "remove it or put the picture in again"},
        {R::ApeTag,            kNote, "apev2-tag",             "There is an APEv2 tag, which hosts do not read",
         "brindle normalize --strip-foreign takes it off; other players may show its texts"},
        {R::Lyrics3Tag,        kNote, "lyrics3-tag",           "There is a Lyrics3 tag, which hosts do not read",
         "brindle normalize --strip-foreign takes it off; other players may show its texts"},
        {R::SecondRecord,      kNote, "second-id3v1",          "Two ID3v1 records follow each other",
         "nothing to do: players read the last"},
        {R::Leftover,          kNote, "leftover",              "A temporary file of brindle, left by a power cut",
         "remove it"},
    };
    // clang-format on
    return kTable;
}

const ReasonRow& row_of(Reason reason) {
    return reason_table()[static_cast<std::size_t>(reason)];
}

std::string text_of(const Finding& finding) {
    return finding.text + ": " +
           (finding.remedy.empty() ? row_of(finding.reason).remedy : finding.remedy);
}

Verdict verdict_of(const std::vector<Finding>& findings) {
    Verdict worst = Verdict::Ok;
    for (const Finding& finding : findings) {
        worst = std::max(worst, row_of(finding.reason).verdict);
    }
    return worst == Verdict::Note ? Verdict::Ok : worst;
}

}  // namespace brindle::host
