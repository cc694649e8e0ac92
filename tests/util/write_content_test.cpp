#include "util/write_content.h"

#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <brindle/error.h>

#include "support/bytes.h"
#include "support/memory_files.h"
#include "support/raised_error.h"
#include "util/byte_range.h"

namespace brindle {
namespace {

using test::Bytes;
using test::FileCall;

const String kName = u"song.mp3";
const Bytes kOld = "tag-audio-end";

struct ContentCase {
    const char* name;
    const char* front;
    std::int64_t kept_from;
    std::int64_t kept_to;
    const char* back;
    const char* result;
    bool is_in_place;
};

const ContentCase kCases[] = {
    {"nothing differs", "tag", 3, 9, "-end", "tag-audio-end", true},
    {"front in place", "TAG", 3, 9, "-end", "TAG-audio-end", true},
    {"back in place", "tag", 3, 9, "-END", "tag-audio-END", true},
    {"both in place", "TAG", 3, 9, "-END", "TAG-audio-END", true},
    {"back grows", "TAG", 3, 9, "-the-end", "TAG-audio-the-end", true},
    {"back goes", "TAG", 3, 9, "", "TAG-audio", true},
    {"back shrinks", "tag", 3, 9, "-e", "tag-audio-e", true},
    {"front grows", "larger-tag", 3, 9, "-end", "larger-tag-audio-end", false},
    {"front goes", "", 3, 13, "", "-audio-end", false},
    {"nothing is kept", "new", 0, 0, "", "new", false},
    {"all is kept", "", 0, 13, "", "tag-audio-end", true},
};

NewContent content_of(const ContentCase& row) {
    const Bytes front = row.front;
    const Bytes back = row.back;
    return {{front.begin(), front.end()}, row.kept_from, row.kept_to, {back.begin(), back.end()}};
}

class WriteContent : public ::testing::TestWithParam<ContentCase> {
protected:
    void SetUp() override { files_.put(kName, kOld); }

    test::MemoryFiles files_;
};

TEST_P(WriteContent, MakesTheFile) {
    for (const bool atomic : {false, true}) {
        SetUp();
        std::vector<SaveWay> ways;
        std::optional<NewContent> announced;
        SaveOptions options{.atomic = atomic};
        options.before_change = [&](SaveWay way) {
            EXPECT_TRUE(announced);
            ways.push_back(way);
        };
        options.before_write = [&](const NewContent& content) {
            EXPECT_EQ(files_.names().size(), 1U);
            announced = content;
        };
        write_content(files_, kName, content_of(GetParam()), options);
        EXPECT_EQ(files_.content(kName), Bytes(GetParam().result));
        EXPECT_EQ(announced, content_of(GetParam()));
        const bool in_place = GetParam().is_in_place && !atomic;
        EXPECT_EQ(ways, std::vector{in_place ? SaveWay::InPlace : SaveWay::Replace});
        EXPECT_EQ(files_.names(), std::vector<String>{kName});
        EXPECT_EQ(files_.open_files(), 0U);
    }
}

// Every write, and the cut at the end.
TEST_P(WriteContent, FailureLeavesTheOldFile) {
    for (const FileCall call : {FileCall::Write, FileCall::SetLength}) {
        for (std::uint64_t nth = 1;; ++nth) {
            SetUp();
            files_.fail({.nth = nth, .call = call, .error = Error(61, u"planned", u"the disk")});
            const auto error = test::raised_error(
                [&] { write_content(files_, kName, content_of(GetParam()), {}); });
            if (!error) {
                break;
            }
            EXPECT_EQ(error->number(), 61);
            EXPECT_EQ(files_.content(kName), kOld);
            EXPECT_EQ(files_.names(), std::vector<String>{kName});
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Cases, WriteContent, ::testing::ValuesIn(kCases));

TEST(WriteContentRange, ThatTheFileDoesNotHaveIsRefused) {
    test::MemoryFiles files;
    files.put(kName, kOld);
    for (const ByteRange& range : {ByteRange{-1, 5}, ByteRange{5, 4}, ByteRange{0, 14}}) {
        const auto error = test::raised_error([&] {
            write_content(files, kName, {{}, range.begin, range.end, {}}, {});
        });
        ASSERT_TRUE(error);
        EXPECT_EQ(error->number(), 5);
        EXPECT_EQ(files.content(kName), kOld);
    }
}

TEST(WriteContentHost, MayRefuseBeforeAnythingIsWritten) {
    test::MemoryFiles files;
    files.put(kName, kOld);
    const auto error = test::raised_error([&] {
        write_content(files, kName, {{}, 3, 9, {}}, {.before_write = [](const NewContent&) {
                          throw Error(RuntimeError::PermissionDenied);
                      }});
    });
    ASSERT_TRUE(error);
    EXPECT_EQ(files.calls(FileCall::Create), 0U);
    EXPECT_EQ(files.content(kName), kOld);
}

}  // namespace
}  // namespace brindle
