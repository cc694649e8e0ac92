// Reading, writing and copying through the system's own descriptors.
#include "util/binary_file.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <numeric>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>
#include <sys/resource.h>

#include "support/raised_error.h"
#include "support/read_only_file.h"
#include "support/temporary_folder.h"
#include "util/environment.h"
#include "util/system_calls.h"

namespace brindle {
namespace {

using test::at_most;
using test::Bytes;
using test::error_number;
using test::fails_with;
using test::SeenCall;
using test::SystemCall;
using test::SystemCalls;
using test::TemporaryFolder;

constexpr std::int32_t kDevice = 57;
constexpr std::int32_t kDiskFull = 61;

FileSystem& files() {
    return system_environment().files;
}

Bytes pattern(std::size_t count) {
    Bytes bytes(count, 0);
    for (std::size_t i = 0; i < count; ++i) {
        bytes[i] = static_cast<std::uint8_t>(i % 251 + i / 65'536);
    }
    return bytes;
}

class BinaryFileTest : public testing::Test {
protected:
    [[nodiscard]] std::unique_ptr<BinaryFile> open(const std::string& entry) const {
        return files().open(folder.name(entry), OpenMode::ReadWrite);
    }

    TemporaryFolder folder;
};

TEST_F(BinaryFileTest, ReadsAtAnyPlace) {
    folder.put("a", pattern(1'000));
    const auto file = open("a");
    Bytes room(100, 0);
    EXPECT_EQ(file->length(), 1'000);
    EXPECT_EQ(file->read_at(500, room), 100U);
    EXPECT_EQ(room, pattern(1'000).part(500, 100));
    EXPECT_EQ(file->read_at(950, room), 50U);
    EXPECT_EQ(room.first(50), pattern(1'000).last(50));
    EXPECT_EQ(file->read_at(1'000, room), 0U);
    EXPECT_EQ(file->read_at(5'000, room), 0U);
    EXPECT_EQ(error_number([&] { file->read_at(-1, room); }), kDevice);
}

TEST_F(BinaryFileTest, ReadsIntoTwoPlacesAtOnce) {
    folder.put("a", pattern(1'000));
    const auto file = open("a");
    Bytes first(100, 0);
    Bytes second(300, 0);
    EXPECT_EQ(file->read_scattered_at(500, first, second), 400U);
    EXPECT_EQ(first, pattern(1'000).part(500, 100));
    EXPECT_EQ(second, pattern(1'000).part(600, 300));
    EXPECT_EQ(file->read_scattered_at(800, first, second), 200U) << "the file ends";
    EXPECT_EQ(first, pattern(1'000).part(800, 100));
    EXPECT_EQ(second.first(100), pattern(1'000).last(100));
    EXPECT_EQ(file->read_scattered_at(970, first, second), 30U);
    EXPECT_EQ(first.first(30), pattern(1'000).last(30));
    EXPECT_EQ(file->read_scattered_at(1'000, first, second), 0U);
    EXPECT_EQ(error_number([&] { file->read_scattered_at(-1, first, second); }), kDevice);
}

TEST_F(BinaryFileTest, WritesAtAnyPlace) {
    folder.put("a", "0123456789");
    const auto file = open("a");
    file->write_at(3, Bytes("abc"));
    file->write_at(12, Bytes("xy"));
    file->write_at(0, {});
    EXPECT_EQ(file->length(), 14);
    file->close();
    EXPECT_EQ(folder.content("a"), Bytes(std::string_view("012abc6789\0\0xy", 14)));
}

TEST_F(BinaryFileTest, LengthIsThatOfNow) {
    folder.put("a", "0123456789");
    const auto file = open("a");
    const auto other = open("a");
    EXPECT_EQ(file->length(), 10);
    other->write_at(10, Bytes("more"));
    EXPECT_EQ(file->length(), 14);
}

TEST_F(BinaryFileTest, IsCutAndGrown) {
    folder.put("a", "0123456789");
    const auto file = open("a");
    file->set_length(4);
    EXPECT_EQ(folder.content("a"), Bytes("0123"));
    file->set_length(6);
    EXPECT_EQ(folder.content("a"), Bytes(std::string_view("0123\0\0", 6)));
}

TEST_F(BinaryFileTest, OffsetsBeyondFourGigabytesWork) {
    folder.put("a", "");
    constexpr std::int64_t kFar = 5'000'000'000;
    const auto file = open("a");
    file->write_at(kFar, Bytes("end"));
    EXPECT_EQ(file->length(), kFar + 3);
    Bytes room(10, 0);
    EXPECT_EQ(file->read_at(kFar, room), 3U);
    EXPECT_EQ(room.first(3), Bytes("end"));
}

TEST_F(BinaryFileTest, FileOpenedForReadingCannotBeWritten) {
    folder.put("a", "abc");
    const auto file = files().open(folder.name("a"), OpenMode::Read);
    EXPECT_EQ(error_number([&] { file->write_at(0, Bytes("x")); }), kDevice);
    EXPECT_EQ(folder.content("a"), Bytes("abc"));
}

TEST_F(BinaryFileTest, InterruptedAndShortReadsGoOn) {
    folder.put("a", pattern(1'000));
    const auto file = open("a");
    SystemCalls calls;
    calls.plan(SystemCall::Read, {fails_with(EINTR), at_most(1), at_most(300), fails_with(EINTR),
                                  fails_with(EINTR), at_most(10)});
    Bytes room(1'000, 0);
    EXPECT_EQ(file->read_at(0, room), 1'000U);
    EXPECT_EQ(room, pattern(1'000));
    EXPECT_EQ(calls.left(), 0U);
}

TEST_F(BinaryFileTest, InterruptedAndShortWritesGoOn) {
    folder.put("a", "");
    const auto file = open("a");
    SystemCalls calls;
    calls.plan(SystemCall::Write, {fails_with(EINTR), at_most(1), at_most(0), at_most(300),
                                   fails_with(EINTR), at_most(0), at_most(0), at_most(10)});
    file->write_at(0, pattern(1'000));
    EXPECT_EQ(calls.left(), 0U);
    EXPECT_EQ(folder.content("a"), pattern(1'000));
}

TEST_F(BinaryFileTest, DeviceThatNeverAcceptsBytesIsAnError) {
    folder.put("a", "");
    const auto file = open("a");
    SystemCalls calls;
    calls.plan(SystemCall::Write, at_most(0), 10'000);
    EXPECT_EQ(error_number([&] { file->write_at(0, Bytes("abc")); }), kDevice);
}

TEST_F(BinaryFileTest, FailuresOfTheSystemAreRaised) {
    folder.put("a", pattern(1'000));
    const auto file = open("a");
    Bytes room(10, 0);
    SystemCalls calls;
    calls.plan(SystemCall::Read, {at_most(5), fails_with(EIO)});
    EXPECT_EQ(error_number([&] { file->read_at(0, room); }), kDevice);
    calls.plan(SystemCall::Write, {at_most(5), fails_with(ENOSPC)});
    EXPECT_EQ(error_number([&] { file->write_at(0, room); }), kDiskFull);
    calls.plan(SystemCall::Truncate, {fails_with(EINTR), fails_with(EFBIG)});
    EXPECT_EQ(error_number([&] { file->set_length(1); }), kDiskFull);
    calls.plan(SystemCall::Sync, {fails_with(EINTR), fails_with(EIO)});
    EXPECT_EQ(error_number([&] { file->flush(); }), kDevice);
    EXPECT_EQ(error_number([&] { file->flush(); }), 0);
    calls.plan(SystemCall::Close, {fails_with(EDQUOT)});
    EXPECT_EQ(error_number([&] { file->close(); }), kDiskFull);
    EXPECT_EQ(calls.left(), 0U);
}

TEST_F(BinaryFileTest, CloseIsCalledOnceEvenIfItFails) {
    folder.put("a", "abc");
    for (const int error : {0, EINTR, EIO}) {
        auto file = open("a");
        SystemCalls calls;
        if (error != 0) {
            calls.plan(SystemCall::Close, {fails_with(error)});
        }
        // A signal is no failure: the file is closed.
        EXPECT_EQ(error_number([&] { file->close(); }), error == EIO ? kDevice : 0) << error;
        file.reset();
        EXPECT_EQ(calls.seen(SystemCall::Close).size(), 1U) << error;
    }
}

TEST_F(BinaryFileTest, DestructionCloses) {
    folder.put("a", "abc");
    auto file = open("a");
    SystemCalls calls;
    file.reset();
    EXPECT_EQ(calls.seen(SystemCall::Close).size(), 1U);
}

TEST_F(BinaryFileTest, ClosedFileAnswersWithErrors) {
    folder.put("a", "abc");
    const auto file = open("a");
    file->close();
    Bytes room(1, 0);
    EXPECT_EQ(error_number([&] { (void)file->length(); }), kDevice);
    EXPECT_EQ(error_number([&] { file->read_at(0, room); }), kDevice);
    EXPECT_EQ(error_number([&] { file->write_at(0, room); }), kDevice);
    EXPECT_EQ(error_number([&] { file->close(); }), kDevice);
}

// Files of this process end at `bytes` while it lives.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
        ::getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit{bytes, before_.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() {
        ::setrlimit(RLIMIT_FSIZE, &before_);
        (void)std::signal(SIGXFSZ, handler_);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit before_{};
    void (*handler_)(int);
};

TEST_F(BinaryFileTest, WriteThatFitsInPartIsAFullDisk) {
    folder.put("a", "");
    const auto file = open("a");
    {
        const FileSizeLimit limit(10'000);
        EXPECT_EQ(error_number([&] { file->write_at(0, pattern(20'000)); }), kDiskFull);
    }
    EXPECT_EQ(folder.content("a"), pattern(20'000).first(10'000));
}

struct CopyCase {
    const char* name;
    std::int64_t from;
    std::int64_t to;
    std::size_t count;
    std::size_t copied;
};

// Of a source of 600,000 bytes.
const CopyCase kCopies[] = {
    {"nothing", 0, 0, 0, 0},
    {"all, same place", 0, 0, 600'000, 600'000},
    {"more than there is", 0, 0, 700'000, 600'000},
    {"shifted by a page", 0, 4'096, 600'000, 600'000},
    {"back by pages", 8'192, 0, 500'000, 500'000},
    {"shifted by one byte", 0, 1, 600'000, 600'000},
    {"back by less than a page", 4'000, 0, 596'000, 596'000},
    {"a few bytes", 599'990, 17, 5, 5},
    {"the last bytes", 599'990, 17, 100, 10},
    {"from beyond the end", 600'000, 0, 100, 0},
    {"from far beyond the end", 4'096'000, 0, 100, 0},
};

TEST_F(BinaryFileTest, CopiesAnyPartAnywhere) {
    folder.put("from", pattern(600'000));
    for (const CopyCase& row : kCopies) {
        folder.put("to", "");
        const auto from = open("from");
        const auto to = open("to");
        EXPECT_EQ(to->copy_from(*from, row.from, row.to, row.count), row.copied) << row.name;
        if (row.copied != 0) {
            const auto gap = static_cast<std::size_t>(row.to);
            EXPECT_EQ(folder.content("to").part(gap, row.copied + 1),
                      pattern(600'000).part(static_cast<std::size_t>(row.from), row.copied))
                << row.name;
        }
    }
}

TEST_F(BinaryFileTest, KernelCopiesWhereWholePagesStayWhole) {
    folder.put("from", pattern(600'000));
    for (const CopyCase& row : kCopies) {
        folder.put("to", "");
        const auto from = open("from");
        const auto to = open("to");
        const SystemCalls calls;
        to->copy_from(*from, row.from, row.to, row.count);
        const bool whole_pages = (row.to - row.from) % 4'096 == 0;
        EXPECT_EQ(!calls.seen(SystemCall::CopyRange).empty(), whole_pages && row.count != 0)
            << row.name;
        if (whole_pages) {
            EXPECT_TRUE(calls.seen(SystemCall::Write).empty()) << row.name;
        }
    }
}

TEST_F(BinaryFileTest, KernelThatRefusesToCopyIsDoneWithout) {
    for (const int error : {EXDEV, EINVAL, ENOSYS, EOPNOTSUPP, EPERM}) {
        folder.put("from", pattern(600'000));
        folder.put("to", "");
        const auto from = open("from");
        const auto to = open("to");
        SystemCalls calls;
        calls.plan(SystemCall::CopyRange, {fails_with(EINTR), at_most(5'000), fails_with(error)});
        EXPECT_EQ(to->copy_from(*from, 0, 0, 600'000), 600'000U) << error;
        EXPECT_EQ(to->copy_from(*from, 0, 614'400, 600'000), 600'000U) << error;
        EXPECT_EQ(calls.left(), 0U);
        EXPECT_EQ(calls.seen(SystemCall::CopyRange).size(), 3U) << "asked again after " << error;
        EXPECT_EQ(folder.content("to").first(600'000), pattern(600'000));
        EXPECT_EQ(folder.content("to").last(600'000), pattern(600'000));
    }
}

TEST_F(BinaryFileTest, KernelThatFailsToCopyIsAnError) {
    folder.put("from", pattern(10'000));
    folder.put("to", "");
    const auto from = open("from");
    const auto to = open("to");
    SystemCalls calls;
    calls.plan(SystemCall::CopyRange, {fails_with(ENOSPC), fails_with(EIO)});
    EXPECT_EQ(error_number([&] { to->copy_from(*from, 0, 0, 10'000); }), kDiskFull);
    EXPECT_EQ(error_number([&] { to->copy_from(*from, 0, 0, 10'000); }), kDevice);
}

TEST_F(BinaryFileTest, CopyThroughMemoryWritesWholePages) {
    folder.put("from", pattern(600'000));
    folder.put("to", "");
    const auto from = open("from");
    const auto to = open("to");
    const SystemCalls calls;
    EXPECT_EQ(to->copy_from(*from, 0, 100, 600'000), 600'000U);
    // The first write ends at 256 KiB, from then on every one begins and ends between pages.
    EXPECT_EQ(calls.seen(SystemCall::Write),
              (std::vector<SeenCall>{{SystemCall::Write, 100, 262'044},
                                     {SystemCall::Write, 262'144, 262'144},
                                     {SystemCall::Write, 524'288, 75'812}}));
}

// A file that is none of this machine's.
class FileElsewhere final : public test::ReadOnlyFile {
public:
    explicit FileElsewhere(Bytes content) : content_(std::move(content)) {}

    std::int64_t length() override { return static_cast<std::int64_t>(content_.size()); }
    std::size_t read_at(std::int64_t offset, std::span<std::uint8_t> into) override {
        const auto from = std::min(static_cast<std::size_t>(offset), content_.size());
        const Bytes part = content_.part(from, into.size());
        std::copy(part.begin(), part.end(), into.begin());
        return part.size();
    }

private:
    Bytes content_;
};

TEST_F(BinaryFileTest, CopiesFromFilesThatAreNotTheSystems) {
    folder.put("to", "");
    FileElsewhere from(pattern(300'000));
    const auto to = open("to");
    EXPECT_EQ(to->copy_from(from, 0, 0, 400'000), 300'000U);
    EXPECT_EQ(folder.content("to"), pattern(300'000));
}

RC_GTEST_PROP(BinaryFileProperty, CopiedBytesAreThoseOfTheSource, ()) {
    const TemporaryFolder folder;
    const auto length = *rc::gen::inRange<std::size_t>(0, 300'000);
    const auto pages = *rc::gen::inRange<std::int64_t>(0, 20);
    const auto bytes = *rc::gen::weightedElement<std::int64_t>({{2, 0}, {1, 1}, {1, 4'095}});
    const auto source_offset = *rc::gen::inRange<std::int64_t>(0, 70'000);
    const auto count = *rc::gen::inRange<std::size_t>(0, 400'000);
    const std::int64_t offset = source_offset % 4'096 + pages * 4'096 + bytes;
    const String from_name = folder.put("from", pattern(length));
    const String to_name = folder.put("to", "");
    const auto from = files().open(from_name, OpenMode::Read);
    const auto to = files().open(to_name, OpenMode::ReadWrite);
    const auto begin = std::min(static_cast<std::size_t>(source_offset), length);
    const Bytes expected = pattern(length).part(begin, count);
    RC_ASSERT(to->copy_from(*from, source_offset, offset, count) == expected.size());
    if (!expected.empty()) {
        RC_ASSERT(folder.content("to").part(static_cast<std::size_t>(offset), count + 1) ==
                  expected);
    }
}

}  // namespace
}  // namespace brindle
