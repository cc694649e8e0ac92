// Asks for everything that a host can read of a file: what the tests count and the benchmarks time.
#pragma once

#include <cstddef>
#include <cstdint>

#include <brindle/cMPEGHeader.h>

namespace brindle::test {

// Text of a Variant, or nothing.
inline std::size_t text_size(const Variant& value) {
    const auto* const text = std::get_if<String>(&value);
    return text == nullptr ? 0 : text->size();
}

// Reads each property once; those with arguments for the title frame and one custom field. The sum
// depends on every answer, so that none can be left out by the compiler.
inline std::size_t read_every_property(const cMPEGHeader& header) {
    std::size_t sum = 0;
    const auto number = [&sum](auto value) { sum += static_cast<std::size_t>(value); };
    const auto text = [&sum](const String& value) { sum += value.size(); };

    text(header.FileName());
    number(header.g_InUse());
    number(header.TimeStyle());
    number(header.Writev1v2Separate());

    text(header.MonoStereo());
    number(header.BitRate());
    number(header.VBR());
    text(header.Layer());
    number(header.Duration());
    number(header.Frequency());
    number(header.RepairRequired());
    text(header.MpegVersion());

    number(header.TagType());
    number(header.FrameCount());
    number(header.ID3TagSizeIncludingHeader());
    number(header.v2Frames()->Count());
    text(header.v2Tag(u"TIT2", 1));
    number(header.TagsInFrame(u"TXXX"));

    text(header.Title());
    text(header.Artist());
    text(header.Album());
    number(header.Year());
    number(header.Track());
    text(header.Genre());
    text(header.Comments());
    text(header.Composer());
    text(header.Publisher());
    text(header.CopyRight());
    text(header.URL());
    text(header.ArtistUrl());

    number(header.Speed());
    number(header.Volume());
    number(header.Opener());
    number(header.CueInmSStart());
    number(header.Sectone());
    number(header.Intro());
    number(header.OutromsStart());
    text(header.CategoryLevel());
    sum += text_size(header.Category());
    text(header.Endstyle());
    number(header.NoFade());
    text(header.Agency());
    text(header.AccountExec());
    text(header.Copy());
    number(header.CustomFieldExists(u"Agency"));
    sum += text_size(header.CustomFieldRetrieve(u"Agency"));

    text(header.Titlev1Tag());
    text(header.artistv1Tag());
    number(header.Yearv1Tag());
    text(header.Commentv1());
    return sum;
}

}  // namespace brindle::test
