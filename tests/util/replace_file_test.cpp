#include "util/replace_file.h"

#include <new>
#include <stdexcept>
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

const String kName = u"music/song.mp3";
const Bytes kOld = "the old file";
const Bytes kNew = "the new one, longer than the old file";

void write_new(BinaryFile& file) {
    file.write_at(0, kNew);
}

class ReplaceFile : public ::testing::Test {
protected:
    void SetUp() override { files_.put(kName, kOld); }

    [[nodiscard]] bool only_file_is(const Bytes& content) const {
        return files_.names() == std::vector<String>{kName} && files_.content(kName) == content &&
               files_.open_files() == 0;
    }
    std::int32_t number_of_error(const String& target = kName) {
        return test::error_number([&] { replace_file(files_, target, write_new); });
    }

    test::MemoryFiles files_;
};

TEST_F(ReplaceFile, NewFileStandsUnderTheOldName) {
    replace_file(files_, kName, write_new);
    EXPECT_TRUE(only_file_is(kNew));
}

TEST_F(ReplaceFile, NewFileIsWholeAndOnTheDeviceBeforeItGetsTheName) {
    replace_file(files_, kName, write_new);
    const String made = u"music/new1.tmp";
    const std::vector<LoggedCall> expected{
        {FileCall::Resolve, kName},        {FileCall::RequireWritable, kName},
        {FileCall::Create, kName},         {FileCall::Write, made},
        {FileCall::CopyAttributes, kName}, {FileCall::Flush, made},
        {FileCall::Close, made},           {FileCall::Replace, kName},
        {FileCall::FlushFolder, kName}};
    EXPECT_EQ(files_.log(), expected);
}

TEST_F(ReplaceFile, WithoutFlushNothingIsFlushed) {
    replace_file(files_, kName, write_new, {.flush = false});
    EXPECT_TRUE(only_file_is(kNew));
    EXPECT_EQ(files_.calls(FileCall::Flush), 0U);
    EXPECT_EQ(files_.calls(FileCall::FlushFolder), 0U);
}

TEST_F(ReplaceFile, FillMayReadTheOldFileAndCloseIt) {
    const auto old = files_.open(kName, OpenMode::Read);
    replace_file(files_, kName, [&](BinaryFile& file) {
        ASSERT_EQ(file.copy_from(*old, 4, 0, 3), 3U);
        old->close();
    });
    EXPECT_TRUE(only_file_is("old"));
}

TEST_F(ReplaceFile, LinkStaysAndItsTargetIsReplaced) {
    files_.link(u"today.mp3", u"tomorrow.mp3");
    files_.link(u"tomorrow.mp3", kName);
    replace_file(files_, u"today.mp3", write_new);
    EXPECT_TRUE(only_file_is(kNew));
    EXPECT_EQ(files_.resolve_links(u"today.mp3"), kName);
}

TEST_F(ReplaceFile, MissingTargetIsRefusedAndNotCreated) {
    EXPECT_EQ(number_of_error(u"music/other.mp3"), 53);
    EXPECT_TRUE(only_file_is(kOld));
    EXPECT_EQ(files_.calls(FileCall::Create), 0U);
}

TEST_F(ReplaceFile, ReadOnlyTargetIsRefusedBeforeAnythingIsCreated) {
    files_.make_read_only(kName);
    EXPECT_EQ(number_of_error(), 75);
    EXPECT_TRUE(only_file_is(kOld));
    EXPECT_EQ(files_.calls(FileCall::Create), 0U);
}

TEST_F(ReplaceFile, ReadOnlyFolderIsRefused) {
    files_.make_folders_read_only();
    EXPECT_EQ(number_of_error(), 75);
    EXPECT_TRUE(only_file_is(kOld));
}

TEST_F(ReplaceFile, FolderIsRefused) {
    EXPECT_EQ(number_of_error(u"music"), 75);
    EXPECT_TRUE(only_file_is(kOld));
}

TEST_F(ReplaceFile, TargetHeldOpenStaysAndTheNewFileIsRemoved) {
    const auto held = files_.open(kName, OpenMode::Read);
    EXPECT_EQ(number_of_error(), 70);
    held->close();
    EXPECT_TRUE(only_file_is(kOld));
}

TEST_F(ReplaceFile, ExceptionsOfFillAreRethrownUnchanged) {
    EXPECT_THROW(replace_file(files_, kName, [](BinaryFile&) { throw std::bad_alloc(); }),
                 std::bad_alloc);
    EXPECT_TRUE(only_file_is(kOld));
    EXPECT_THROW(
        replace_file(files_, kName, [](BinaryFile&) { throw std::runtime_error("cancelled"); }),
        std::runtime_error);
    EXPECT_TRUE(only_file_is(kOld));
    try {
        replace_file(files_, kName,
                     [](BinaryFile&) { throw Error(1234, u"a description", u"a source"); });
        FAIL() << "no error was raised";
    } catch (const Error& error) {
        EXPECT_EQ(error.number(), 1234);
        EXPECT_EQ(error.description(), u"a description");
        EXPECT_EQ(error.source(), u"a source");
    }
    EXPECT_TRUE(only_file_is(kOld));
}

TEST_F(ReplaceFile, FullDiskHalfWayLeavesTheOldFile) {
    files_.fail({.call = FileCall::Write,
                 .error = Error(RuntimeError::DiskFull),
                 .bytes_before = kNew.size() / 2});
    EXPECT_EQ(number_of_error(), 61);
    EXPECT_TRUE(only_file_is(kOld));
}

TEST_F(ReplaceFile, ErrorOfTheRenameIsRaisedAndNotThatOfTheRemoval) {
    // The rename is the 8th call of all, the removal the 9th.
    files_.fail({.nth = 8, .from_then_on = true, .error = Error(RuntimeError::PermissionDenied)});
    EXPECT_EQ(number_of_error(), 70);
    EXPECT_EQ(files_.calls(FileCall::Remove), 1U);
    EXPECT_EQ(files_.content(kName), kOld);
}

TEST_F(ReplaceFile, TargetThatChangedSinceItWasReadStays) {
    const FileState state = files_.state(kName);
    const auto write_target_meanwhile = [&](BinaryFile& file) {
        write_new(file);
        const auto target = files_.open(kName, OpenMode::ReadWrite);
        target->write_at(0, Bytes("THE"));
        target->close();
    };
    try {
        replace_file(files_, kName, write_target_meanwhile, {.expected = state});
        FAIL() << "no error was raised";
    } catch (const Error& error) {
        EXPECT_EQ(error.number(), 70);
    }
    EXPECT_TRUE(only_file_is("THE old file"));
}

TEST_F(ReplaceFile, TargetThatIsAsItWasReadIsReplaced) {
    replace_file(files_, kName, write_new, {.expected = files_.state(kName)});
    EXPECT_TRUE(only_file_is(kNew));
}

TEST_F(ReplaceFile, LastWordBeforeTheRenameIsTheCallers) {
    const auto refuse = [&] {
        EXPECT_EQ(files_.calls(FileCall::Flush), 1U);
        EXPECT_EQ(files_.calls(FileCall::Replace), 0U);
        throw Error(RuntimeError::PermissionDenied);
    };
    EXPECT_THROW(replace_file(files_, kName, write_new, {.before_rename = refuse}), Error);
    EXPECT_TRUE(only_file_is(kOld));
}

TEST_F(ReplaceFile, FolderThatCannotBeFlushedIsNoFailure) {
    files_.fail({.call = FileCall::FlushFolder});
    EXPECT_EQ(number_of_error(), 0);
    EXPECT_TRUE(files_.has_failed());
    EXPECT_TRUE(only_file_is(kNew));
}

// Runs the whole once to learn its calls, then again with each of them failing.
class ReplaceFileFaults : public ReplaceFile, public ::testing::WithParamInterface<bool> {};

TEST_P(ReplaceFileFaults, EachFailingCallLeavesTheOldOrTheNewFile) {
    const bool from_then_on = GetParam();
    replace_file(files_, kName, write_new);
    const std::vector<LoggedCall> calls = files_.log();
    ASSERT_EQ(calls.size(), 9U);
    for (std::size_t nth = 1; nth <= calls.size(); ++nth) {
        const FileCall failing = calls[nth - 1].call;
        SCOPED_TRACE(std::to_string(nth) + ": " + std::string(test::name_of(failing)));
        files_.put(kName, kOld);
        files_.fail({.nth = nth, .from_then_on = from_then_on, .error = Error(57, u"planned")});
        const std::int32_t number = number_of_error();
        EXPECT_TRUE(files_.has_failed());
        files_.fail_nothing();
        EXPECT_EQ(files_.open_files(), 0U);
        if (failing == FileCall::FlushFolder) {
            EXPECT_EQ(number, 0);
            EXPECT_TRUE(only_file_is(kNew));
            continue;
        }
        EXPECT_EQ(number, 57);
        EXPECT_EQ(files_.content(kName), kOld);
        // When everything fails, so does the removal: at most the unfinished file stays.
        const bool may_leave_one = from_then_on && nth > 3;
        EXPECT_EQ(files_.names().size(), may_leave_one ? 2U : 1U);
        for (const String& name : files_.names()) {
            if (name != kName) {
                files_.remove(name);
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(OnceAndFromThenOn, ReplaceFileFaults, ::testing::Bool(),
                         [](const auto& run) { return run.param ? "FromThenOn" : "Once"; });

}  // namespace
}  // namespace brindle
