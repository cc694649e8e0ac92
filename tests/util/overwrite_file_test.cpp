#include "util/overwrite_file.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <brindle/error.h>

#include "support/bytes.h"
#include "support/memory_files.h"
#include "support/raised_error.h"

namespace brindle {
namespace {

using test::Bytes;
using test::FileCall;
using test::LoggedCall;

const String kName = u"song.mp3";
const Bytes kOld = "tag-and-audio-and-the-end";
const Bytes kNew = "TAG-and-audio-and-the-end+RECORD";

class OverwriteFile : public ::testing::Test {
protected:
    void SetUp() override {
        files_.put(kName, kOld);
        state_ = files_.state(kName);
        files_.reset_counts();
    }
    // The record first, then the tag.
    std::optional<Error> overwrite() {
        const Bytes record = "+RECORD";
        const Bytes tag = "TAG";
        const Bytes old_tag = "tag";
        const std::vector<Overwrite> pieces{{25, record, {}}, {0, tag, old_tag}};
        return test::raised_error(
            [&] { overwrite_file(*files_.open(kName, OpenMode::ReadWrite), state_, pieces); });
    }

    test::MemoryFiles files_;
    FileState state_;
};

TEST_F(OverwriteFile, WritesInOrderFlushesAndCloses) {
    EXPECT_FALSE(overwrite());
    EXPECT_EQ(files_.content(kName), kNew);
    const std::vector<LoggedCall> expected{{FileCall::Open, kName},      {FileCall::State, kName},
                                           {FileCall::Write, kName},     {FileCall::Write, kName},
                                           {FileCall::FlushData, kName}, {FileCall::Close, kName}};
    EXPECT_EQ(files_.log(), expected);
}

TEST_F(OverwriteFile, WithoutPiecesClosesAlone) {
    overwrite_file(*files_.open(kName, OpenMode::ReadWrite), state_, {});
    const std::vector<LoggedCall> expected{{FileCall::Open, kName}, {FileCall::Close, kName}};
    EXPECT_EQ(files_.log(), expected);
}

TEST_F(OverwriteFile, FailedWriteLeavesTheOldFileAndRaisesItsError) {
    for (const std::uint64_t nth : {1U, 2U}) {
        for (const std::size_t bytes_before : {0U, 1U, 3U, 6U}) {
            SetUp();
            files_.fail({.nth = nth,
                         .call = FileCall::Write,
                         .error = Error(61, u"planned", u"the disk"),
                         .bytes_before = bytes_before});
            const std::optional<Error> error = overwrite();
            ASSERT_TRUE(error);
            EXPECT_EQ(error->number(), 61);
            EXPECT_EQ(error->description(), u"planned");
            EXPECT_EQ(files_.content(kName), kOld) << nth << " after " << bytes_before;
            EXPECT_EQ(files_.open_files(), 0U);
        }
    }
}

TEST_F(OverwriteFile, FailedWriteBackIsReported) {
    files_.fail({.nth = 2,
                 .call = FileCall::Write,
                 .from_then_on = true,
                 .error = Error(57, u"planned", u"the disk"),
                 .bytes_before = 2});
    const std::optional<Error> error = overwrite();
    ASSERT_TRUE(error);
    EXPECT_EQ(error->number(), 57);
    EXPECT_EQ(error->description(),
              u"planned; what was overwritten could not be restored, and the file holds part of "
              u"the new tag");
}

TEST_F(OverwriteFile, FailedFlushUndoesNothing) {
    for (const FileCall call : {FileCall::FlushData, FileCall::Close}) {
        SetUp();
        files_.fail({.call = call, .error = Error(61, u"planned", u"the disk")});
        const std::optional<Error> error = overwrite();
        ASSERT_TRUE(error);
        EXPECT_EQ(error->number(), 57);
        EXPECT_EQ(error->description(),
                  u"Device I/O error: written, but perhaps not on the device");
        EXPECT_EQ(files_.content(kName), kNew);
    }
}

TEST_F(OverwriteFile, FileThatChangedIsNotTouched) {
    const Bytes other = "TAG-AND-AUDIO-AND-THE-END";
    files_.open(kName, OpenMode::ReadWrite)->write_at(0, other);
    const std::optional<Error> error = overwrite();
    ASSERT_TRUE(error);
    EXPECT_EQ(error->number(), 70);
    EXPECT_EQ(files_.content(kName), other);
}

TEST_F(OverwriteFile, FileThatWasReplacedIsNotTouched) {
    files_.put(kName, kOld);
    const std::optional<Error> error = overwrite();
    ASSERT_TRUE(error);
    EXPECT_EQ(error->number(), 70);
    EXPECT_EQ(files_.content(kName), kOld);
}

}  // namespace
}  // namespace brindle
