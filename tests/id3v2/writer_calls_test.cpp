// What saving and stripping cost in calls and bytes.
#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

#include "id3v2/cMP3ID3v2.h"
#include "support/bytes.h"
#include "support/frames.h"
#include "support/id3v1.h"
#include "support/memory_environment.h"
#include "support/tags.h"

namespace brindle {
namespace {

using test::Bytes;
using test::FileCall;
using test::Tag;

const String kName = u"song.mp3";

// 5 MB.
const Bytes& long_audio() {
    static const Bytes audio = test::stream({}, 12'000);
    return audio;
}

class WriterCalls : public ::testing::Test {
protected:
    void open(const Bytes& content) {
        world_.files.put(kName, content);
        model_.FileName(kName);
        model_.Title(u"Song");
        world_.files.reset_counts();
        size_ = content.size();
    }
    // A copy goes in pieces of 256 KiB.
    void expect_few_calls_and_each_byte_once() const {
        EXPECT_LE(world_.files.calls(), 25 + 2 * size_ / (256 * 1024));
        EXPECT_LE(world_.files.bytes_read(), size_ + size_ / 50);
        EXPECT_LE(world_.files.bytes_written(), size_ + size_ / 50);
    }

    test::MemoryEnvironment world_;
    cMP3ID3v2 model_{world_.environment};
    std::size_t size_ = 0;
};

TEST_F(WriterCalls, SaveInPlaceWritesTheTagAreaAndARecordsFields) {
    open(Tag().padded_to(4096) + test::stream({}, 5000) + test::Id3v1().bytes());
    model_.Update();
    EXPECT_LE(world_.files.calls(), 11U);
    EXPECT_EQ(world_.files.calls(FileCall::Write), 2U);
    EXPECT_EQ(world_.files.bytes_written(), 4096U + 125U);
    EXPECT_LT(world_.files.bytes_read(), 100'000U);
}

TEST_F(WriterCalls, SaveInPlaceWritesTheTagAreaAndANewRecord) {
    open(Tag().padded_to(4096) + test::stream({}, 5000));
    model_.Update();
    EXPECT_LE(world_.files.calls(), 11U);
    EXPECT_EQ(world_.files.bytes_written(), 4096U + 128U);
}

TEST_F(WriterCalls, RebuildReadsAndWritesEachByteOnce) {
    open(long_audio());
    model_.Update();
    expect_few_calls_and_each_byte_once();
}

TEST_F(WriterCalls, ConversionReadsAndWritesEachByteOnce) {
    open(Tag(2).text("TT2", "Song").padded_to(4096) + long_audio());
    model_.Update();
    expect_few_calls_and_each_byte_once();
}

TEST_F(WriterCalls, StripsReadAndWriteEachByteOnce) {
    const Bytes file = Tag().padded_to(4096) + long_audio() + test::Id3v1().bytes();
    for (const std::int32_t tags : {1, 2}) {
        open(file);
        model_.StripTags(tags);
        expect_few_calls_and_each_byte_once();
    }
}

}  // namespace
}  // namespace brindle
