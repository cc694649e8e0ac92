// Which frame is taken as the first, and what is said of the stream. Frames of the default kind
// have 417 bytes: 144 x 128000 / 44100.

#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

#include "mpeg/analysis.h"
#include "mpeg/clsMPEG.h"
#include "support/bytes.h"
#include "support/frames.h"

namespace brindle::test {
namespace {

const Frame kFrame;
constexpr std::int32_t kFrameBytes = 417;
const Bytes kV1Record = Bytes("TAG") + zeros(125);

void expect_no_stream(const Analysis& file) {
    EXPECT_FALSE(file.found());
    EXPECT_EQ(file.analyser.FileName(), u"");
    EXPECT_EQ(file.analyser.DurationmS(), -1);
    EXPECT_EQ(file.analyser.HeaderStartPos(), 0);
    EXPECT_EQ(file.analyser.BitRate(), 0);
    EXPECT_EQ(file.analyser.FrameCounter(), 0);
    EXPECT_EQ(file.analyser.MpegVersion(), 0);
    EXPECT_EQ(file.analyser.SamplingFrequency(), 0);
    EXPECT_EQ(file.analyser.Padding(), 0);
    EXPECT_EQ(file.analyser.ChannelMode(), -1);
    EXPECT_EQ(file.analyser.CopyRight(), -1);
    EXPECT_EQ(file.analyser.Original(), -1);
    EXPECT_EQ(file.analyser.Emphasis(), 2);
    EXPECT_FALSE(file.analyser.VBR());
    EXPECT_FALSE(file.analyser.accepted_position());
    EXPECT_FALSE(file.analyser.read_fault());
}

TEST(StreamScan, FreshAnalyserKnowsNoStream) {
    const Analysis file{Bytes()};
    expect_no_stream(file);
}

TEST(StreamScan, ConstantStreamHasTheDurationOfItsBytes) {
    Analysis file(stream(kFrame.with_mode(Mode::JointStereo), 120));
    const clsMPEG& analyser = file.run();
    EXPECT_TRUE(file.found());
    EXPECT_EQ(analyser.HeaderStartPos(), 0);
    EXPECT_EQ(analyser.accepted_position(), 0);
    EXPECT_EQ(analyser.MpegVersion(), 1);
    EXPECT_EQ(analyser.MpegLayer(), 3);
    EXPECT_EQ(analyser.Crc(), 0);
    EXPECT_EQ(analyser.SamplingFrequency(), 44100);
    EXPECT_EQ(analyser.Padding(), 0);
    EXPECT_EQ(analyser.ChannelMode(), 1);
    EXPECT_EQ(analyser.CopyRight(), 0);
    EXPECT_EQ(analyser.Original(), 0);
    EXPECT_EQ(analyser.Emphasis(), 0);
    EXPECT_FALSE(analyser.VBR());
    EXPECT_EQ(analyser.BitRate(), 128'000);
    EXPECT_EQ(analyser.DurationmS(), 3128);  // 50,040 x 8 / 128 = 3127.5
    EXPECT_EQ(analyser.FrameCounter(), 0);
}

TEST(StreamScan, KeptHeaderHasItsPlaceAndItsDigits) {
    Analysis file(zeros(7) + stream(kFrame, 120));
    const FrameHeaderRecord& header = file.run().CurrentHeader();
    EXPECT_EQ(header.HeaderStartPos, 7);
    EXPECT_EQ(header.HeaderBits(), u"11111111111110111001000000000000");
    EXPECT_EQ(header.FrameLength, kFrameBytes);
}

TEST(StreamScan, Id3v1RecordIsNoAudio) {
    Analysis file(stream(kFrame, 120) + kV1Record);
    EXPECT_EQ(file.with_v1().run().DurationmS(), 3128);
    // Without being told, its 128 bytes play 8 milliseconds: 3135.5.
    Analysis untold(stream(kFrame, 120) + kV1Record);
    EXPECT_EQ(untold.run().DurationmS(), 3136);
}

TEST(StreamScan, AudioAfterATagStartsThere) {
    Analysis file(zeros(1000) + stream(kFrame, 120));
    const clsMPEG& analyser = file.tag(900, 100).run();
    EXPECT_EQ(analyser.HeaderStartPos(), 1000);
    EXPECT_EQ(analyser.DurationmS(), 3128);
}

TEST(StreamScan, JunkInFrontOfTheAudioIsSkippedByteByByte) {
    Analysis file(zeros(100) + repeated(23, 0xFF) + stream(kFrame, 120));
    EXPECT_EQ(file.tag(100).run().HeaderStartPos(), 123);
}

TEST(StreamScan, HundredFramesAreAcceptedFromTheSecondOne) {
    Analysis file(stream(kFrame, 100));
    EXPECT_EQ(file.run().HeaderStartPos(), kFrameBytes);
    Analysis longer(stream(kFrame, 101));
    EXPECT_EQ(longer.run().HeaderStartPos(), 0);
    EXPECT_TRUE(longer.found());
    Analysis shorter(stream(kFrame, 99));
    EXPECT_EQ(shorter.run().HeaderStartPos(), 0);
    EXPECT_TRUE(shorter.found());
}

TEST(StreamScan, EmptyFileHasNoStream) {
    Analysis file{Bytes()};
    file.run();
    expect_no_stream(file);
}

TEST(StreamScan, TenFramesAreTooFewAndElevenAreEnough) {
    Analysis ten(stream(kFrame, 10));
    ten.run();
    expect_no_stream(ten);
    Analysis eleven(stream(kFrame, 11));
    eleven.run();
    EXPECT_TRUE(eleven.found());
    EXPECT_EQ(eleven.analyser.DurationmS(), 287);  // 4587 x 8 / 128 = 286.69
}

TEST(StreamScan, CutLastFrameConfirmsNothing) {
    Analysis file(stream(kFrame, 15) + kFrame.bytes().first(300));
    file.run();
    expect_no_stream(file);
}

TEST(StreamScan, FramesOfAnotherEmphasisEndTheChain) {
    Frame other = kFrame;
    other.emphasis = 1;
    Analysis file(stream(kFrame, 5) + stream(other, 1) + stream(kFrame, 24));
    EXPECT_EQ(file.run().HeaderStartPos(), 6 * kFrameBytes);
}

TEST(StreamScan, LaterFileWithoutAStreamLeavesNothingOfTheEarlierOne) {
    Analysis file(stream(kFrame, 120));
    file.run();
    ASSERT_TRUE(file.found());
    file.world.files.put(kName, zeros(5000));
    file.run();
    expect_no_stream(file);
}

TEST(StreamScan, FilesOfAFewBytesHaveNoStream) {
    const Bytes frame = kFrame.bytes();
    for (std::size_t size = 0; size < 12; ++size) {
        Analysis file(frame.first(size));
        file.run();
        expect_no_stream(file);
    }
    Analysis one(frame);
    one.run();
    expect_no_stream(one);
}

TEST(StreamScan, TagLargerThanHalfTheFileCountsAsNone) {
    const Bytes audio = stream(kFrame, 120);  // 50,040 bytes
    Analysis file(audio);
    EXPECT_EQ(file.tag(25'021).run().HeaderStartPos(), 0);
    EXPECT_TRUE(file.found());
    // Exactly half is accepted: the 61st frame is there.
    Analysis half(audio);
    EXPECT_EQ(half.tag(25'020).run().HeaderStartPos(), 25'020);
}

TEST(StreamScan, ChangeOfChannelModeWithinTheFirstFramesIsNotAcceptedFromThere) {
    Analysis file(stream(kFrame, 30) + stream(kFrame.with_mode(Mode::JointStereo), 120));
    EXPECT_EQ(file.run().HeaderStartPos(), 30 * kFrameBytes);
    EXPECT_EQ(file.analyser.ChannelMode(), 1);
}

TEST(StreamScan, ChangeOfChannelModeAfterTheFirst101FramesDoesNotMatter) {
    Analysis file(stream(kFrame, 101) + stream(kFrame.with_mode(Mode::JointStereo), 60));
    EXPECT_EQ(file.run().HeaderStartPos(), 0);
    EXPECT_EQ(file.analyser.ChannelMode(), 0);
}

// After a tag that claims ten bytes too many there is by chance a header inside the first frame:
// 8 kbit/s, 8000 Hz, Layer II, 144 bytes. At 174 is the next frame of 160 kbit/s, 2880 bytes,
// which ends at 3054 in a file of 3056. The audio is 29 frames of 104 bytes from 20 on.
Bytes file_with_overstated_tag() {
    const Frame chance{.version = 25, .layer = 2, .kbps = 8, .frequency = 8000};
    Bytes file = zeros(20) + stream(kFrame.with_kbps(32), 29) + zeros(20);
    const auto put = [&](std::size_t place, const Bytes& bytes) {
        std::copy(bytes.begin(), bytes.end(), file.begin() + static_cast<std::ptrdiff_t>(place));
    };
    put(30, chance.bits().bytes());
    put(174, chance.with_kbps(160).bits().bytes());
    return file;
}

TEST(StreamScan, ChainFromTheTagsEndThatMeetsTheFilesEndIsTriedTenBytesEarlier) {
    Analysis file(file_with_overstated_tag());
    const clsMPEG& analyser = file.tag(30).run();
    EXPECT_EQ(analyser.HeaderStartPos(), 20);
    EXPECT_EQ(analyser.MpegVersion(), 1);
    EXPECT_EQ(analyser.DurationmS(), 759);  // 3036 x 8 / 32
}

TEST(StreamScan, SuchAChainElsewhereIsNotTriedEarlier) {
    Analysis file(file_with_overstated_tag());
    file.tag(29).run();
    // From 29 on the next frame of the audio is the one at 124.
    EXPECT_EQ(file.analyser.HeaderStartPos(), 124);
}

TEST(StreamScan, ChainThatMeetsTheFilesEndIsTriedEarlierOnlyOnce) {
    // A hundred frames need a hundred more. From the place ten bytes earlier the same happens.
    Analysis file(zeros(20) + stream(kFrame, 100));
    EXPECT_EQ(file.tag(20).run().HeaderStartPos(), 20 + kFrameBytes);
}

TEST(StreamScan, TagOfTenBytesIsTriedEarlierFromTheFilesStart) {
    Analysis file(zeros(10) + stream(kFrame, 100));
    EXPECT_EQ(file.tag(10).run().HeaderStartPos(), 10 + kFrameBytes);
}

TEST(StreamScan, TagThatEndsBelowTenBytesIsNotTriedEarlier) {
    Analysis file(zeros(9) + stream(kFrame, 100));
    EXPECT_EQ(file.tag(9).run().HeaderStartPos(), 9 + kFrameBytes);
}

TEST(StreamScan, SearchEndsAfter16384PositionsWithoutAHeader) {
    Analysis last(zeros(16'384) + stream(kFrame, 120));
    EXPECT_EQ(last.run().HeaderStartPos(), 16'384);
    Analysis beyond(zeros(16'385) + stream(kFrame, 120));
    beyond.run();
    expect_no_stream(beyond);
}

// Three frames of 1440 bytes and 12 of 24. From the first one 4608 / 1440 = 3.2, so two have to
// follow and do: it is found and kept, but two are too few to accept it. From the first short one
// eleven have to follow, and those are enough.
TEST(StreamScan, FirstFrameOfARunThatIsTooShortIsKeptWhenALaterRunIsAccepted) {
    const Frame large{.kbps = 320, .frequency = 32000};
    const Frame small{.version = 2, .layer = 3, .kbps = 8, .frequency = 24000};
    Analysis file(stream(large, 3) + stream(small, 12));
    const clsMPEG& analyser = file.run();
    EXPECT_TRUE(file.found());
    EXPECT_EQ(analyser.HeaderStartPos(), 0);
    EXPECT_EQ(analyser.accepted_position(), 0);
    EXPECT_EQ(analyser.SamplingFrequency(), 32000);
    EXPECT_EQ(analyser.DurationmS(), 115);  // 4608 x 8 / 320 = 115.2
}

// 128 and 192 kbit/s in turn: 417 and 626 bytes, 1043 a pair.
std::vector<int> in_turn(std::size_t pairs, int first, int second) {
    std::vector<int> rates;
    for (std::size_t pair = 0; pair < pairs; ++pair) {
        rates.push_back(first);
        rates.push_back(second);
    }
    return rates;
}

TEST(VariableStream, IsAveragedOverAllItsFrames) {
    Analysis file(variable_stream(kFrame, in_turn(60, 128, 192)));
    const clsMPEG& analyser = file.run();
    EXPECT_TRUE(analyser.VBR());
    EXPECT_EQ(analyser.FrameCounter(), 120);
    EXPECT_EQ(analyser.CurrentHeader().BitRate, 160);
    EXPECT_EQ(analyser.DurationmS(), 3135);  // 1152 x 120 / 44100 = 3.1347
    // 62,580 / 120 = 521.5; x 38 x 8 = 158,536; / 1024 = 154.8
    EXPECT_EQ(analyser.BitRate(), 155);
}

TEST(VariableStream, LastFrameThatIsCutDoesNotCount) {
    const Bytes audio = variable_stream(kFrame, in_turn(60, 128, 192));
    Analysis file(audio.first(audio.size() - 1));
    EXPECT_EQ(file.run().FrameCounter(), 119);
}

TEST(VariableStream, ChangeAfterTheFirst101FramesIsNotNoticed) {
    Analysis file(stream(kFrame, 101) + stream(kFrame.with_kbps(192), 50));
    EXPECT_FALSE(file.run().VBR());
    EXPECT_EQ(file.analyser.BitRate(), 128'000);
}

TEST(VariableStream, WalkEndsAtTheFirstGap) {
    Analysis file(variable_stream(kFrame, in_turn(60, 128, 192)) + zeros(3) +
                  variable_stream(kFrame, in_turn(60, 128, 192)));
    EXPECT_EQ(file.run().FrameCounter(), 120);
}

TEST(VariableStream, AverageOfTwentyIsTooLow) {
    const Frame slow{.version = 2, .layer = 3, .kbps = 16, .frequency = 24000};
    // The last one keeps the average from every frame on at 20 or below.
    Analysis file(variable_stream(slow, in_turn(60, 16, 24)) + stream(slow, 1));
    const clsMPEG& analyser = file.run();
    EXPECT_TRUE(file.found());
    EXPECT_FALSE(analyser.VBR());
    EXPECT_EQ(analyser.FrameCounter(), 0);
    EXPECT_EQ(analyser.BitRate(), 16'000);
    EXPECT_EQ(analyser.DurationmS(), 3624);  // (60 x (48 + 72) + 48) x 8 / 16
}

// 90 frames of 8 kbit/s, 24 bytes, and 100 of 24 kbit/s, 72 bytes. With k of the slow ones the
// average is (8k + 2400) / (k + 100): above 20 for 33 of them and fewer.
TEST(VariableStream, IsAveragedFromTheFirstFrameThatLiftsTheAverageAboveTwenty) {
    const Frame slow{.version = 2, .layer = 3, .kbps = 8, .frequency = 24000};
    Analysis file(stream(slow, 90) + stream(slow.with_kbps(24), 100));
    const clsMPEG& analyser = file.run();
    EXPECT_TRUE(analyser.VBR());
    EXPECT_EQ(analyser.HeaderStartPos(), 0);
    EXPECT_EQ(analyser.FrameCounter(), 133);
    EXPECT_EQ(analyser.CurrentHeader().BitRate, 20);  // 2664 / 133 = 20.03
    EXPECT_EQ(analyser.DurationmS(), 3192);           // 576 x 133 / 24000
    // 9360 / 133 = 70.3759; x 42 x 8 = 23,646.3; / 1024 = 23.09
    EXPECT_EQ(analyser.BitRate(), 23);
}

// Ten thousand bytes, then 16 frames of 8344 bytes: the audio starts in the file's second half.
TEST(VariableStream, InTheSecondHalfOfTheFileLosesItsPositionButNotTheAcceptedOne) {
    Analysis file(zeros(10'000) + variable_stream(kFrame, in_turn(8, 192, 128)));
    const clsMPEG& analyser = file.run();
    EXPECT_TRUE(analyser.VBR());
    EXPECT_EQ(analyser.HeaderStartPos(), 0);
    EXPECT_EQ(analyser.accepted_position(), 10'000);
    EXPECT_EQ(analyser.FrameCounter(), 16);
    EXPECT_EQ(analyser.DurationmS(), 418);  // 1152 x 16 / 44100 = 0.4180
    // 18,344 / 16 = 1146.5; x 38 x 8 = 348,536; / 1024 = 340.4
    EXPECT_EQ(analyser.BitRate(), 340);
}

TEST(XingStream, TakesFramesAndBytesFromItsHeader) {
    Analysis file(xing_frame(kFrame, {.frames = 1000, .bytes = 46'287}) + stream(kFrame, 110));
    const clsMPEG& analyser = file.run();
    EXPECT_TRUE(analyser.VBR());
    EXPECT_EQ(analyser.FrameCounter(), 1000);
    EXPECT_EQ(analyser.DurationmS(), 26'122);
    EXPECT_EQ(analyser.BitRate(), 14);  // 46.287 x 38 x 8 = 14,071.2; / 1024 = 13.7
    EXPECT_EQ(analyser.HeaderStartPos(), 0);
}

TEST(XingStream, WithFrameCountAloneIsAConstantOne) {
    Analysis file(
        xing_frame(kFrame, {.frames = 1000, .bytes = 46'287, .flags = 1, .offset = kXingMono1}) +
        stream(kFrame, 119));
    const clsMPEG& analyser = file.run();
    EXPECT_FALSE(analyser.VBR());
    EXPECT_EQ(analyser.BitRate(), 128'000);
    EXPECT_EQ(analyser.DurationmS(), 3128);
}

TEST(XingStream, ByteCountAboveTheFilesLengthMakesTheScanFail) {
    const Bytes audio = stream(kFrame, 110);
    const auto length = static_cast<std::uint32_t>(audio.size() + kFrameBytes);
    Analysis longer(xing_frame(kFrame, {.frames = 111, .bytes = length + 1}) + audio);
    longer.run();
    expect_no_stream(longer);
    Analysis exact(xing_frame(kFrame, {.frames = 111, .bytes = length}) + audio);
    exact.run();
    EXPECT_TRUE(exact.found());
}

TEST(XingStream, FrameCountOfNoneMakesTheScanFailUnlessThereAreNoBytesEither) {
    Analysis file(xing_frame(kFrame, {.frames = 0, .bytes = 1000}) + stream(kFrame, 110));
    file.run();
    expect_no_stream(file);
    Analysis none(xing_frame(kFrame, {.frames = 0, .bytes = 0}) + stream(kFrame, 110));
    none.run();
    EXPECT_TRUE(none.found());
    EXPECT_EQ(none.analyser.DurationmS(), 0);
    EXPECT_EQ(none.analyser.BitRate(), 0);
}

TEST(XingStream, MoreSamplesThan32BitsMakeTheScanFail) {
    Analysis file(xing_frame(kFrame, {.frames = 1'864'136, .bytes = 1000}) + stream(kFrame, 110));
    file.run();
    expect_no_stream(file);
}

TEST(XingStream, IsAcceptedWithTooFewFramesForAnyOther) {
    Analysis file(xing_frame(kFrame, {.frames = 3, .bytes = 1251}) + stream(kFrame, 2));
    const clsMPEG& analyser = file.run();
    EXPECT_TRUE(file.found());
    EXPECT_EQ(analyser.DurationmS(), 78);  // 3456 / 44100 = 0.0784
}

class GivenFile : public ScannedFile {
public:
    GivenFile(String name, std::int32_t tag_size) : name_(std::move(name)), tag_size_(tag_size) {}
    [[nodiscard]] String FileName() const override { return name_; }
    [[nodiscard]] std::int32_t Id3v2TagSize() const override { return tag_size_; }

private:
    String name_;
    std::int32_t tag_size_;
};

TEST(SetFileName, SearchesAfterTheModelsTagFirst) {
    Analysis file(stream(kFrame, 200));
    file.analyser.SetFileName(GivenFile(kName, 5 * kFrameBytes));
    EXPECT_TRUE(file.found());
    EXPECT_EQ(file.analyser.HeaderStartPos(), 5 * kFrameBytes);
}

// From the model's tag on, a run of two frames up to the file's end is too short. It must not count
// for the second search, which comes to the place right after the analyser's tag.
TEST(SetFileName, ChainOfTheFirstSearchIsForgottenInTheSecond) {
    const Frame slow{.version = 2, .kbps = 8, .frequency = 24'000};  // 24 bytes each
    const Bytes content =
        stream(slow, 120) + zeros(6'000 - 2'880) + kFrame.bytes() + kFrame.with_kbps(320).bytes();
    ASSERT_EQ(content.size(), 7'461U);
    Analysis file(content);
    file.tag(6'200).analyser.SetFileName(GivenFile(kName, 3'000));
    EXPECT_TRUE(file.found());
    EXPECT_EQ(file.analyser.HeaderStartPos(), 0);
    EXPECT_EQ(file.analyser.BitRate(), 8'000);
    EXPECT_EQ(file.analyser.DurationmS(), 7'461);  // 7,461 x 8 / 8
}

TEST(SetFileName, SearchesAfterTheAnalysersTagWhenThatFails) {
    // At 43,000 and for the next 16,384 bytes there are only zeros.
    Analysis file(zeros(30) + stream(kFrame, 101) + zeros(60'000));
    file.analyser.SetFileName(GivenFile(kName, 43'000));
    EXPECT_TRUE(file.found());
    EXPECT_EQ(file.analyser.HeaderStartPos(), 30);
}

TEST(SetFileName, KeepsTheHeaderOfAnEarlierFile) {
    Analysis file(zeros(50) + stream(kFrame, 120));
    file.run();
    ASSERT_EQ(file.analyser.HeaderStartPos(), 50);
    file.world.files.put(u"other.mp3", stream(kFrame.with_kbps(64), 120));
    file.analyser.SetFileName(GivenFile(u"other.mp3", 0));
    EXPECT_EQ(file.analyser.FileName(), u"other.mp3");
    EXPECT_EQ(file.analyser.HeaderStartPos(), 50);
    EXPECT_EQ(file.analyser.BitRate(), 128'000);
}

// What is remembered of broken chains is a ring of 524,288 positions: the chain at that distance
// after the broken one is another.
TEST(SetFileName, ChainHalfAMegabyteAfterABrokenOneIsItsOwn) {
    Analysis file(stream(kFrame, 120));
    file.run();
    ASSERT_TRUE(file.found());
    const Bytes broken = stream(kFrame, 60);
    file.world.files.put(kName, broken + zeros(524'288 - broken.size()) +
                                    xing_frame(kFrame, {.frames = 1000, .bytes = 46'287}) +
                                    stream(kFrame, 110));
    file.analyser.SetFileName(GivenFile(kName, 0));
    EXPECT_TRUE(file.found());
    EXPECT_TRUE(file.analyser.VBR());
    EXPECT_EQ(file.analyser.FrameCounter(), 1000);
}

TEST(SetFileName, WithoutAStreamResets) {
    Analysis file(stream(kFrame, 120));
    file.run();
    file.world.files.put(kName, zeros(5000));
    file.analyser.SetFileName(GivenFile(kName, 0));
    expect_no_stream(file);
}

}  // namespace
}  // namespace brindle::test
