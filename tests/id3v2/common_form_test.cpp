// Expected contents by hand from "ID3 tag version 2.3.0" and the code page.
#include "id3v2/common_form.h"

#include <ostream>
#include <string_view>

#include <gtest/gtest.h>

#include "support/bytes.h"

namespace brindle {
namespace {

using namespace std::string_view_literals;
using enum CommonFormResult;
using test::Bytes;

struct CommonFormCase {
    const char* name;
    std::string_view id;
    Bytes content;
    CommonFormResult result;
    Bytes expected = {};
    bool was_version4 = false;
};

void PrintTo(const CommonFormCase& form_case, std::ostream* out) {
    *out << form_case.name;
}

const CommonFormCase kCases[] = {
    // clang-format off
    {"Latin1StaysAsItIs", "TIT2", "\0Gr\xFC\xDF"sv, AsBefore},
    {"TerminatorOfLatin1Stays", "TIT2", "\0Song\0"sv, AsBefore},
    {"NothingAtAll", "TIT2", ""sv, AsBefore},
    {"EncodingAlone", "TIT2", "\1"sv, Recoded, "\0"sv},
    {"UnknownEncoding", "TIT2", "\4Song"sv, AsBefore},
    {"Utf16WithMark", "TIT2", "\1\xFF\xFEG\0\xFC\0"sv, Recoded, "\0G\xFC"sv},
    {"Utf16WithTerminator", "TIT2", "\1\xFF\xFEG\0\0\0"sv, Recoded, "\0G"sv},
    {"Utf8", "TIT2", "\3G\xC3\xBC"sv, Recoded, "\0G\xFC"sv},
    {"CyrillicStays", "TIT2", "\1\xFF\xFE\x16\x04"sv, NoneThere},
    // Windows-1252 has it as 92, which other programs read as a control character.
    {"TypographicApostropheStays", "TIT2", "\3it\xE2\x80\x99s"sv, NoneThere},
    {"EuroSignStays", "TIT2", "\3\xE2\x82\xAC"sv, NoneThere},
    {"LastCharacterOfLatin1", "TIT2", "\3\xC3\xBF"sv, Recoded, "\0\xFF"sv},
    {"FirstAfterLatin1Stays", "TIT2", "\3\xC4\x80"sv, NoneThere},
    {"NoBreakSpaceIsTheFirstAbove", "TIT2", "\3\xC2\xA0"sv, Recoded, "\0\xA0"sv},
    {"ControlCharacterStays", "TIT2", "\3\xC2\x9F"sv, NoneThere},
    {"CharacterOutsideOfTheFirstPlaneStays", "TIT2", "\3\xF0\x9F\x8E\xB5"sv, NoneThere},
    {"ValuesAreJoined", "TPE1", "\3" "A\0B\0C"sv, Joined, "\0A/B/C"sv},
    {"ValuesOfLatin1AreJoined", "TPE1", "\0" "A\0B"sv, Joined, "\0A/B"sv},
    {"ValuesOneOfWhichDoesNotFitStay", "TPE1", "\3" "A\0\xE2\x82\xAC"sv, NoneThere},
    {"UserText", "TXXX", "\3Mood\0calm"sv, Recoded, "\0Mood\0calm"sv},
    {"UserTextInUtf16", "TXXX", "\1\xFF\xFEM\0\0\0\xFF\xFE" "c\0"sv, Recoded, "\0M\0c"sv},
    {"UserTextOfSeveralValues", "TXXX", "\3M\0a\0b"sv, Joined, "\0M\0a/b"sv},
    {"NameOfUserTextDoesNotFit", "TXXX", "\3\xE2\x82\xAC\0a"sv, NoneThere},
    {"CommentLosesItsLanguage", "COMM", "\0eng\0Hi"sv, Recoded, "\0\0\0\0\0Hi"sv},
    {"CommentOfHostsLosesItsPrefix", "COMM", "\0\0nt\0Hi"sv, Recoded, "\0\0\0\0\0Hi"sv},
    {"CommentWithoutLanguageStays", "COMM", "\0\0\0\0\0Hi"sv, AsBefore},
    {"DescribedCommentKeepsItsLanguage", "COMM", "\0engd\0Hi"sv, AsBefore},
    {"DescribedCommentInUtf8", "COMM", "\3engd\0Hi"sv, Recoded, "\0engd\0Hi"sv},
    {"LyricsKeepTheirLanguage", "USLT", "\1eng\xFF\xFE\0\0\xFF\xFEL\0"sv, Recoded, "\0eng\0L"sv},
    {"TermsOfUse", "USER", "\3engfree"sv, Recoded, "\0engfree"sv},
    {"UserLink", "WXXX", "\3\xC3\xA9\0http://a"sv, Recoded, "\0\xE9\0http://a"sv},
    {"LinkHasNoForm", "WOAR", "http://a"sv, NoneThere},
    {"PictureIsOfNoUse", "APIC", "\1image/png\0\3\xFF\xFE\0\0x"sv, AsBefore},
    {"PrivateFrameIsNoText", "PRIV", "\1x\0y"sv, AsBefore},
    {"PriceAndDateStayWithTheText", "OWNE", "\3EUR1\0" "20260101S"sv, AsBefore},
    {"PeopleStayApart", "IPLS", "\1\xFF\xFE" "a\0\0\0\xFF\xFE" "b\0\0\0"sv, Recoded, "\0a\0b\0"sv},
    {"PeopleOfLatin1Stay", "IPLS", "\0a\0b\0"sv, AsBefore},
    {"PeopleOfVersion4StayApart", "TIPL", "\3a\0b\0c"sv, Recoded, "\0a\0b\0c\0"sv},
    {"PlayersOfVersion4StayApart", "TMCL", "\0a\0b"sv, AsBefore},
    {"GenreByNumber", "TCON", "\3" "17"sv, Recoded, "\0(17)"sv, true},
    {"FirstAndLastDigit", "TCON", "\3" "9\0" "0"sv, Recoded, "\0(9)(0)"sv, true},
    {"NextToDigits", "TCON", "\0" "1:\0" "/1"sv, Joined, "\0" "1://1"sv, true},
    {"GenreByNumberOfVersion3", "TCON", "\0" "17"sv, AsBefore, {}, false},
    {"GenresByNumberAndName", "TCON", "\3" "17\0Salsa"sv, Recoded, "\0(17)Salsa"sv, true},
    {"GenresByName", "TCON", "\3Rock\0Salsa"sv, Joined, "\0Rock/Salsa"sv, true},
    {"Remix", "TCON", "\3RX"sv, Recoded, "\0(RX)"sv, true},
    {"GenreInParentheses", "TCON", "\0(17)Salsa"sv, AsBefore, {}, true},
    // clang-format on
};

class CommonForms : public ::testing::TestWithParam<CommonFormCase> {};

TEST_P(CommonForms, AreThoseThatAllReadAlike) {
    const CommonFormCase& form_case = GetParam();
    const CommonForm form = in_common_form(form_case.id, form_case.content, form_case.was_version4);
    EXPECT_EQ(form.result, form_case.result);
    EXPECT_EQ(Bytes(form.content), form_case.expected);
}

INSTANTIATE_TEST_SUITE_P(Frames, CommonForms, ::testing::ValuesIn(kCases),
                         [](const auto& tested) { return tested.param.name; });

TEST(CommonForms, PeopleWhoDoNotFitAreInUtf16) {
    EXPECT_EQ(Bytes(list_of_people({u"a", u"\u0416"})), Bytes("\1\xFF\xFE"
                                                              "a\0\0\0\xFF\xFE\x16\x04\0\0"sv));
    EXPECT_EQ(Bytes(list_of_people({u"a", u"b"})), Bytes("\0a\0b\0"sv));
}

}  // namespace
}  // namespace brindle
