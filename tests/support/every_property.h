// Asks for everything that a host can read of a file: what the tests count and compare, and the
// benchmarks time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <variant>

#include <brindle/cMPEGHeader.h>

namespace brindle::test {

// Shows each property once; those with arguments for the title frame and one custom field.
template <typename Visit>
void visit_every_property(const cMPEGHeader& header, Visit visit) {
    visit(header.FileName());
    visit(header.g_InUse());
    visit(header.TimeStyle());
    visit(header.Writev1v2Separate());

    visit(header.MonoStereo());
    visit(header.BitRate());
    visit(header.VBR());
    visit(header.Layer());
    visit(header.Duration());
    visit(header.Frequency());
    visit(header.RepairRequired());
    visit(header.MpegVersion());

    visit(header.TagType());
    visit(header.FrameCount());
    visit(header.ID3TagSizeIncludingHeader());
    visit(header.v2Frames()->Count());
    visit(header.v2Tag(u"TIT2", 1));
    visit(header.TagsInFrame(u"TXXX"));

    visit(header.Title());
    visit(header.Artist());
    visit(header.Album());
    visit(header.Year());
    visit(header.Track());
    visit(header.Genre());
    visit(header.Comments());
    visit(header.Composer());
    visit(header.Publisher());
    visit(header.CopyRight());
    visit(header.URL());
    visit(header.ArtistUrl());

    visit(header.Speed());
    visit(header.Volume());
    visit(header.Opener());
    visit(header.CueInmSStart());
    visit(header.Sectone());
    visit(header.Intro());
    visit(header.OutromsStart());
    visit(header.CategoryLevel());
    visit(header.Category());
    visit(header.Endstyle());
    visit(header.NoFade());
    visit(header.Agency());
    visit(header.AccountExec());
    visit(header.Copy());
    visit(header.CustomFieldExists(u"Agency"));
    visit(header.CustomFieldRetrieve(u"Agency"));

    visit(header.Titlev1Tag());
    visit(header.artistv1Tag());
    visit(header.Yearv1Tag());
    visit(header.Commentv1());
}

// The sum depends on every answer, so that none can be left out by the compiler.
inline std::size_t read_every_property(const cMPEGHeader& header) {
    std::size_t sum = 0;
    visit_every_property(header, [&sum](const auto& value) {
        using Value = std::remove_cvref_t<decltype(value)>;
        if constexpr (std::is_same_v<Value, String>) {
            sum += value.size();
        } else if constexpr (std::is_same_v<Value, Variant>) {
            const auto* const text = std::get_if<String>(&value);
            sum += text == nullptr ? 0 : text->size();
        } else if constexpr (std::is_floating_point_v<Value>) {
            // A file may contain any number, also one that fits no integer.
            sum += value != 0 ? 1 : 0;
        } else {
            sum += static_cast<std::size_t>(value);
        }
    });
    return sum;
}

}  // namespace brindle::test
