// Whether hosts read of a tag what it says: by hand case by case, and against the plan of a save,
// which finds it out frame by frame in another way.
#include <algorithm>
#include <cstdint>
#include <functional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include <brindle/cMPEGHeader.h>
#include <brindle/save_plan.h>
#include <brindle/tag_facts.h>

#include "facade/loaded_header.h"
#include "support/damaged_files.h"
#include "support/made_content.h"
#include "support/tags.h"

namespace brindle::test {
namespace {

using namespace std::string_view_literals;

Bytes picture_of(std::size_t frame_size) {
    const Bytes start = "\0image/png\0\3\0"sv;
    return start + letters(frame_size - start.size());
}

struct TagCase {
    const char* name;
    Bytes tag;
    bool same;
};

void PrintTo(const TagCase& tag_case, std::ostream* stream) {
    *stream << tag_case.name;
}

class ComparedTags : public ::testing::TestWithParam<TagCase> {};

TEST_P(ComparedTags, TellWhetherHostsReadTheSame) {
    const LoadedHeader file(GetParam().tag + audio());
    EXPECT_EQ(compare_tag(file.header).hosts_read_the_same, GetParam().same);
}

std::vector<TagCase> tag_cases() {
    const Bytes cut_text = Bytes("USLT") + big_endian(6'000, 4) + zeros(2) + Bytes("\0eng\0"sv);
    return {
        // clang-format off
        {"NoTag", {}, true},
        {"PlainTexts", Tag(3).text("TIT2", "Song").text("TPE1", "Ann").padding(50).bytes(), true},
        {"AllKinds", Tag(3).text("TIT2", "Song").field("Cue In", "1500").comment("eng", "d", "Hi")
                           .lyrics("eng", "", "La").frame("WOAR", "http://a")
                           .frame("WXXX", "\0d\0http://a"sv).picture("image/png", 3, "x", letters(9))
                           .frame("PRIV", "me\0\1\2"sv).bytes(), true},
        {"SeveralOfAnId", Tag(3).text("TPE1", "Ann").comment("eng", "", "1").text("TPE1", "Bob")
                                .comment("deu", "", "2").bytes(), true},
        {"EmptyFrame", Tag(3).frame("TIT2", {}).text("TIT2", "A").bytes(), true},
        {"WideText", Tag(3).utf16_text("TIT2", u"Song \u00C4").bytes(), true},
        {"WideTextOutsideTheCodePage", Tag(3).utf16_text("TIT2", u"\u03A9").bytes(), false},
        {"WideTextThatLooksLikeOther8BitText",
         Tag(3).frame("TIT2", "\1\xFF\xFE\x41\x42"sv).bytes(), false},
        {"Utf8Text", Tag(4).utf8_text("TIT2", "Song").bytes(), false},
        {"Version4", Tag(4).text("TIT2", "Song").bytes(), true},
        {"Version2", Tag(2).text("TT2", "Song").padding(50).bytes(), false},
        {"TwoValues", Tag(4).text("TPE1", "A\0B"sv).bytes(), true},
        {"LongestText", Tag(3).frame("TIT2", Bytes{0} + letters(4'999)).bytes(), true},
        {"TooLongText", Tag(3).frame("TIT2", Bytes{0} + letters(5'000)).bytes(), false},
        {"TooLongTextOfFramesThatNobodyNames",
         Tag(3).frame("XYZQ", letters(5'000)).bytes(), true},
        {"LargestPicture", Tag(3).frame("APIC", picture_of(81'920)).bytes(), true},
        {"TooLargePicture", Tag(3).frame("APIC", picture_of(81'921)).bytes(), false},
        {"TooLargeCompressedPicture",
         Tag(3).raw(Bytes("APIC") + big_endian(81'921, 4) + Bytes{0, 0x80} + letters(81'921))
               .bytes(), false},
        {"TextAfterWhatHostsCannotPass",
         Tag(3).frame("GEOB", zeros(5'001)).text("TPE1", "Ann").bytes(), false},
        {"CompressedText",
         Tag(3).raw(flagged("TIT2", 0x80, big_endian(5, 4) + letters(9))).bytes(), false},
        {"LongCompressedText",
         Tag(3).raw(Bytes("TIT2") + big_endian(5'004, 4) + Bytes{0, 0x80} + zeros(5'004)).bytes(),
         false},
        {"GroupedText", Tag(3).raw(flagged("TIT2", 0x20, "\7\0Song"sv)).bytes(), true},
        {"TextThatTheTagCutsOff", Tag(3).raw(cut_text).bytes(), false},
        {"UnsynchronisedText",
         Tag(3).flags(0x80).frame_claiming("TIT2", 4, Bytes{0, 'A', 0xFF, 0, 0xE0}).bytes(), false},
        {"ExtendedHeaderWithChecksum",
         Tag(3).flags(0x40).raw(big_endian(10, 4) + Bytes{0x80, 0} + zeros(4) + letters(4))
               .text("TIT2", "Song").bytes(), false},
        {"SecondTagOfPlainText",
         Tag(3).text("TPE1", "Ann").padding(10) + Tag(3).text("TIT2", "Song").bytes(), true},
        {"SecondTagOfUtf8Text",
         Tag(3).text("TPE1", "Ann").padding(10) + Tag(4).utf8_text("TIT2", "Song").bytes(), false},
        {"TagAfterOtherBytes", zeros(100) + Tag(3).utf16_text("TIT2", u"\u03A9").bytes(), false},
        // clang-format on
    };
}

INSTANTIATE_TEST_SUITE_P(Facade, ComparedTags, ::testing::ValuesIn(tag_cases()),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(ComparedTags, FactsAreThoseOfTheTag) {
    const LoadedHeader file(Tag(4).utf8_text("TIT2", "\xC5\x81") + audio());
    EXPECT_EQ(compare_tag(file.header).facts.text(u"TIT2"), u"\u0141");
}

TEST(ComparedTags, NothingIsComparedWithoutAFile) {
    const LoadedHeader none;
    EXPECT_FALSE(compare_tag(none.header).hosts_read_the_same);
    EXPECT_EQ(compare_tag(none.header).facts.version, 0);
}

// --- Against the plan

bool is_text(const TagFrame& frame) {
    constexpr std::u16string_view kOthers[] = {u"COMM", u"USLT", u"IPLS"};
    return frame.id.starts_with(u'T') || frame.id.starts_with(u'W') ||
           std::find(std::begin(kOthers), std::end(kOthers), frame.id) != std::end(kOthers);
}

bool plan_names_a_frame(const cMPEGHeader& header) {
    const SavePlan plan = plan_save(header);
    return std::any_of(
               plan.changes.begin(), plan.changes.end(),
               [](const ChangedFrame& frame) { return is_text(frame) && !frame.same_text; }) ||
           std::any_of(plan.losses.begin(), plan.losses.end(), [](const LostFrame& frame) {
               return frame.reason != LossReason::NotWritten &&
                      (is_text(frame) ||
                       (frame.id == u"APIC" && frame.reason == LossReason::TooLarge));
           });
}

Bytes random_frame(RandomChoices& choices, int version) {
    constexpr std::string_view kIds[] = {"TIT2", "TPE1", "TXXX", "COMM", "USLT",
                                         "WOAR", "WXXX", "IPLS", "TMCL", "USER",
                                         "APIC", "PRIV", "GEOB", "UFID", "TCON"};
    const std::string_view id = kIds[choices.below(std::size(kIds))];
    Bytes body;
    if (choices.one_in(8)) {
        body = noise(choices.below(60), choices);
    } else {
        body = Bytes{static_cast<std::uint8_t>(choices.one_in(3) ? choices.below(5) : 0)};
        body += choices.one_in(3) ? Bytes("eng") : Bytes();
        body += choices.one_in(3) ? Bytes{0xFF, 0xFE} : Bytes();
        for (std::uint32_t left = choices.below(5); left > 0; --left) {
            const Bytes parts[] = {"Song",      "\0"sv,      "\0\0"sv,          "S\0o\0"sv,
                                   Bytes{0x92}, Bytes{0xE4}, Bytes{0xFF, 0xFE}, Bytes{0xC3, 0xA4},
                                   "/"};
            body += parts[choices.below(std::size(parts))];
        }
    }
    if (choices.one_in(12)) {
        body += letters(id == "APIC" ? 81'900 + choices.below(50) : 4'980 + choices.below(40));
    }
    const auto size =
        static_cast<std::uint32_t>(body.size() + (choices.one_in(10) ? choices.below(200) : 0) -
                                   (choices.one_in(20) && !body.empty() ? 1 : 0));
    const bool is_syncsafe = version == 4 && !choices.one_in(5);
    const Bytes flags{0, static_cast<std::uint8_t>(choices.one_in(5) ? 1U << choices.below(8) : 0)};
    return Bytes(id) + (is_syncsafe ? syncsafe(size) : big_endian(size, 4)) + flags + body;
}

Bytes random_tag(RandomChoices& choices) {
    const auto version = static_cast<int>(choices.between(3, 4));
    Tag tag(version);
    for (std::uint32_t left = choices.below(5); left > 0; --left) {
        tag.raw(random_frame(choices, version));
    }
    if (choices.one_in(6)) {
        tag.flags(static_cast<std::uint8_t>(1U << choices.between(4, 7)));
    }
    if (choices.one_in(10)) {
        tag.size(choices.below(400));
    }
    return tag.padding(choices.one_in(2) ? choices.below(50) : 0).bytes();
}

// Of files made by number: where hosts read the same, a plan names no frame. Both answers are to
// be met often.
void expect_agreement(std::uint64_t files, const std::function<Bytes(RandomChoices&)>& make_file) {
    std::uint64_t same = 0;
    for (std::uint64_t seed = 1; seed <= files; ++seed) {
        RandomChoices choices(seed);
        const LoadedHeader file(make_file(choices));
        if (compare_tag(file.header).hosts_read_the_same) {
            ++same;
            ASSERT_FALSE(plan_names_a_frame(file.header)) << "seed " << seed;
        }
    }
    EXPECT_GT(same, files / 10);
    EXPECT_LT(same, files - files / 10);
}

TEST(ComparedTags, OfAnyFramesAgreeWithThePlan) {
    expect_agreement(4'000, [](RandomChoices& choices) {
        const Bytes before = choices.one_in(8) ? zeros(choices.below(30)) : Bytes();
        const Bytes second = choices.one_in(8) ? random_tag(choices) : Bytes();
        return before + random_tag(choices) + second + stream(Frame{}, 30);
    });
}

TEST(ComparedTags, OfDamagedFilesAgreeWithThePlan) {
    const auto streams = read_streams(BRINDLE_TEST_STREAMS);
    expect_agreement(
        2'000, [&](RandomChoices& choices) { return make_damaged_file(streams, choices).content; });
}

}  // namespace
}  // namespace brindle::test
