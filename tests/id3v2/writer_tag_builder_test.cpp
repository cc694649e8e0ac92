#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "id3v2/tag_area.h"
#include "id3v2/tag_builder.h"
#include "support/bytes.h"

namespace brindle {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;
using test::Bytes;

const Bytes kHeader = Bytes("ID3\x03\0\0\0\0\0\0"sv);
const Bytes kEndMark = test::zeros(4);

struct Value {
    String id;
    String text;
};

FrameStore store_of(const std::vector<Value>& values) {
    FrameStore store;
    for (const Value& value : values) {
        store.add(value.id, value.text, 0);
    }
    return store;
}

Bytes built(const FrameStore& store) {
    return build_tag(store);
}

// What the frames of a tag look like without its header and end mark.
Bytes frames_of(const std::vector<Value>& values) {
    const Bytes tag = built(store_of(values));
    EXPECT_EQ(tag.first(kHeader.size()), kHeader);
    EXPECT_EQ(tag.last(kEndMark.size()), kEndMark);
    return tag.part(kHeader.size(), tag.size() - kHeader.size() - kEndMark.size());
}

TEST(TagBuilder, TagWithoutFramesIsHeaderAndEndMark) {
    EXPECT_EQ(built(FrameStore()), kHeader + kEndMark);
}

TEST(TagBuilder, FrameIsIdPlainSizeTwoZeroFlagsEncodingAndText) {
    EXPECT_EQ(frames_of({{u"TIT2", u"Song"}}), Bytes("TIT2\0\0\0\x05\0\0\0Song"sv));
}

TEST(TagBuilder, SizeOfAFrameIsPlainAndNotSyncsafe) {
    // 199 characters and the encoding: 200 is C8, syncsafe it would be 01 48.
    EXPECT_EQ(frames_of({{u"TIT2", String(199, u'a')}}),
              Bytes("TIT2\0\0\0\xC8\0\0\0"sv) + Bytes(std::string(199, 'a')));
}

TEST(TagBuilder, SizeFillsItsFourBytesBigEndian) {
    // 70,000 and the encoding: 01 11 71.
    EXPECT_EQ(frames_of({{u"TIT2", String(70'000, u'a')}}).first(11),
              Bytes("TIT2\0\x01\x11\x71\0\0\0"sv));
}

TEST(TagBuilder, EmptyValueIsABodyOfTheEncodingAlone) {
    EXPECT_EQ(frames_of({{u"TIT2", u""}}), Bytes("TIT2\0\0\0\x01\0\0\0"sv));
}

TEST(TagBuilder, CommentKeepsItsSeparatorsAfterTheEncoding) {
    EXPECT_EQ(frames_of({{u"COMM", u"\0nt\0x"s}}), Bytes("COMM\0\0\0\x06\0\0\0\0\x6E\x74\0\x78"sv));
}

TEST(TagBuilder, PictureIsWrittenAsHeldWithoutAnEncodingInFront) {
    EXPECT_EQ(frames_of({{u"APIC", u"\0image/png\0\x03\0\u2030P\0G"s}}),
              Bytes("APIC\0\0\0\x11\0\0\0image/png\0\x03\0\x89P\0G"sv));
}

TEST(TagBuilder, EmptyPictureIsAFrameWithoutABody) {
    EXPECT_EQ(frames_of({{u"APIC", u""}}), Bytes("APIC\0\0\0\0\0\0"sv));
}

TEST(TagBuilder, FramesStandInTheOrderFirstSeenWithAllValuesOfAnIdTogether) {
    EXPECT_EQ(frames_of({{u"TIT2", u"a"}, {u"COMM", u"b"}, {u"TPE1", u"c"}, {u"COMM", u"d"}}),
              Bytes("TIT2\0\0\0\x02\0\0\0a"
                    "COMM\0\0\0\x02\0\0\0b"
                    "COMM\0\0\0\x02\0\0\0d"
                    "TPE1\0\0\0\x02\0\0\0c"sv));
}

TEST(TagBuilder, TextIsOfTheCodePageAndOtherCharactersAreQuestionMarks) {
    EXPECT_EQ(frames_of({{u"TIT2", u"\u00E9\u20AC\u0416"}}),
              Bytes("TIT2\0\0\0\x04\0\0\0\xE9\x80?"sv));
}

TEST(TagBuilder, IdsAreCutOrFilledToFourCharacters) {
    EXPECT_EQ(frames_of({{u"TITLE", u"a"}}), Bytes("TITL\0\0\0\x02\0\0\0a"sv));
    EXPECT_EQ(frames_of({{u"AB", u"a"}}), Bytes("AB\0\0\0\0\0\x02\0\0\0a"sv));
    EXPECT_EQ(frames_of({{u"", u"a"}}), Bytes("\0\0\0\0\0\0\0\x02\0\0\0a"sv));
}

TEST(TagBuilder, IdsThatContainID3AreLeftOut) {
    EXPECT_EQ(frames_of({{u"ID3X", u"a"}, {u"TIT2", u"b"}, {u"XID3", u"c"}, {u"ID3", u"d"}}),
              Bytes("TIT2\0\0\0\x02\0\0\0b"sv));
    EXPECT_EQ(frames_of({{u"Id3X", u"a"}}), Bytes("Id3X\0\0\0\x02\0\0\0a"sv));
}

TEST(TagBuilder, CustomValueAfterAnEmptyOneIsNotWritten) {
    EXPECT_EQ(frames_of({{u"TXXX", u"a"}, {u"TXXX", u"b"}, {u"TXXX", u""}, {u"TXXX", u"d"}}),
              Bytes("TXXX\0\0\0\x02\0\0\0a"
                    "TXXX\0\0\0\x02\0\0\0b"sv));
}

TEST(TagBuilder, CustomValueAfterARemovedOneIsNotWritten) {
    FrameStore store = store_of({{u"TXXX", u"a"}, {u"TXXX", u"b"}, {u"TXXX", u"c"}});
    store.remove_value(u"TXXX", 2);
    EXPECT_EQ(built(store), kHeader + Bytes("TXXX\0\0\0\x02\0\0\0a"sv) + kEndMark);
}

TEST(TagBuilder, CustomValuesOfWhichTheFirstIsEmptyAreAllWritten) {
    EXPECT_EQ(frames_of({{u"TXXX", u""}, {u"TXXX", u"b"}}), Bytes("TXXX\0\0\0\x01\0\0\0"
                                                                  "TXXX\0\0\0\x02\0\0\0b"sv));
}

TEST(TagBuilder, EmptyValueOfAnotherIdHidesNoLaterValue) {
    EXPECT_EQ(frames_of({{u"COMM", u"a"}, {u"COMM", u""}, {u"COMM", u"c"}}),
              Bytes("COMM\0\0\0\x02\0\0\0a"
                    "COMM\0\0\0\x01\0\0\0"
                    "COMM\0\0\0\x02\0\0\0c"sv));
}

TEST(TagBuilder, NumberWithoutAValueIsWrittenEmpty) {
    FrameStore store = store_of({{u"COMM", u"a"}, {u"COMM", u"b"}, {u"COMM", u"c"}});
    store.remove_value(u"COMM", 2);
    EXPECT_EQ(built(store), kHeader +
                                Bytes("COMM\0\0\0\x02\0\0\0a"
                                      "COMM\0\0\0\x01\0\0\0"
                                      "COMM\0\0\0\x02\0\0\0c"sv) +
                                kEndMark);
}

TEST(TagBuilder, IdThatOnlyTheHostHasListedHasNoFrame) {
    FrameStore store = store_of({{u"TIT2", u"a"}});
    store.frame_list()->Add(String(u"TALB"), u"TALB");
    EXPECT_EQ(built(store), kHeader + Bytes("TIT2\0\0\0\x02\0\0\0a"sv) + kEndMark);
}

TEST(TagBuilder, FittedTagIsZeroFilledWithItsSizeInSevenBitBytes) {
    std::vector<std::uint8_t> tag = build_tag(store_of({{u"TIT2", u"Song"}}));
    fit_tag(tag, 2048);
    // 2,038 = 15 * 128 + 118.
    const Bytes expected =
        Bytes("ID3\x03\0\0\0\0\x0F\x76TIT2\0\0\0\x05\0\0\0Song"sv) + test::zeros(2048 - 25);
    EXPECT_EQ(Bytes(tag), expected);
}

TEST(RoomyArea, IsTheNextMultipleOf2048AboveTheNeed) {
    struct Row {
        std::int64_t needed;
        std::int64_t area;
    };
    for (const Row& row : {Row{14, 2048}, Row{1000, 2048}, Row{2047, 2048}, Row{2048, 4096},
                           Row{2049, 4096}, Row{4095, 4096}, Row{4096, 6144}}) {
        EXPECT_EQ(roomy_area(row.needed), row.area) << row.needed;
    }
}

}  // namespace
}  // namespace brindle
