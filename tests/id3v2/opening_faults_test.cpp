#include <cstdint>
#include <new>
#include <string_view>

#include <gtest/gtest.h>

#include <brindle/error.h>

#include "id3v2/opened_model.h"
#include "support/failing_allocation.h"
#include "support/id3v1.h"
#include "support/raised_error.h"

namespace brindle {
namespace {

using test::audio;
using test::Bytes;
using test::error_number;
using test::FailingAllocation;
using test::FaultyRun;
using test::FileCall;
using test::for_each_failing_allocation;
using test::kSong;
using test::OpenedModel;
using test::Tag;

// A picture that needs reads of its own, between frames that are read before and after it.
Bytes song() {
    return Tag(3)
               .text("TIT2", "A title that does not fit into a small buffer")
               .field("Cue In", "1500")
               .picture("image/png", 3, "", test::repeated(60000, 'p'))
               .text("TPE1", "Singer")
               .padded_to(70000)
               .bytes() +
           audio() + test::Id3v1{.title = "V1"}.bytes();
}

// What is saved after a faulty opening is either nothing or everything.
void expect_save_keeps_the_tag(OpenedModel& opened, std::uint64_t nth) {
    const Bytes before = opened.world.files.content(kSong);
    bool raised = false;
    try {
        opened.model.Update();
    } catch (const Error& error) {
        raised = true;
        EXPECT_TRUE(error.number() == 57 || error.number() == 7) << error.number();
    }
    if (raised) {
        EXPECT_EQ(opened.world.files.content(kSong), before) << nth;
        return;
    }
    test::MemoryEnvironment world;
    world.files.put(kSong, opened.world.files.content(kSong));
    cMP3ID3v2 again(world.environment);
    again.FileName(kSong);
    const bool kept = again.FileName() == kSong &&
                      again.Title() == u"A title that does not fit into a small buffer" &&
                      again.Artist() == u"Singer" && again.CueIn() == 1500 &&
                      again.Tag(u"APIC", 1).size() > 60000;
    EXPECT_TRUE(kept) << "the save after fault " << nth << " lost frames";
}

TEST(OpeningFaults, AFailingReadLeavesWhatWasReadAndRaisesNothing) {
    OpenedModel whole(song());
    const std::uint64_t reads = whole.world.files.calls(FileCall::Read);
    ASSERT_GE(reads, 4U);
    for (std::uint64_t nth = 1; nth <= reads; ++nth) {
        for (const bool from_then_on : {false, true}) {
            OpenedModel opened;
            opened.world.files.put(kSong, song());
            opened.world.files.fail(
                {.nth = nth, .call = FileCall::Read, .from_then_on = from_then_on});
            EXPECT_NO_THROW(opened.model.FileName(kSong)) << nth;
            EXPECT_TRUE(opened.world.files.has_failed());
            EXPECT_EQ(opened.model.FileName(), kSong);
            const String title = opened.model.Title();
            EXPECT_TRUE(title.empty() || title == whole.model.Title());
            EXPECT_LE(opened.model.FrameCount(), 4);
            EXPECT_EQ(opened.world.files.open_files(), 0U);
            opened.world.files.fail_nothing();
            expect_save_keeps_the_tag(opened, nth);
        }
    }
}

// The claimed size is compared with places in the file, so the second tag has to claim more than it
// needs for its last frame to be read.
TEST(OpeningFaults, AFailingReadOfASecondTagCostsNoneOfItsFrames) {
    const Bytes file = Tag(3).text("TIT2", "First").padded_to(20'000) +
                       Tag(3)
                           .picture("image/png", 3, "", test::repeated(60'000, 'p'))
                           .text("TPE1", "Singer")
                           .padded_to(100'000)
                           .bytes() +
                       audio();
    OpenedModel whole(file);
    ASSERT_EQ(whole.model.Artist(), u"Singer");
    const std::uint64_t reads = whole.world.files.calls(FileCall::Read);
    std::uint64_t refused = 0;
    for (std::uint64_t nth = 1; nth <= reads; ++nth) {
        OpenedModel opened;
        opened.world.files.put(kSong, file);
        opened.world.files.fail({.nth = nth, .call = FileCall::Read});
        opened.model.FileName(kSong);
        opened.world.files.fail_nothing();
        try {
            opened.model.Update();
        } catch (const Error& error) {
            EXPECT_EQ(error.number(), 57) << nth;
            EXPECT_EQ(opened.world.files.content(kSong), file) << nth;
            ++refused;
            continue;
        }
        opened.model.FileName(kSong);
        EXPECT_EQ(opened.model.Artist(), u"Singer") << nth;
    }
    EXPECT_GE(refused, 3U) << "the record's, the head's and the second tag's";
}

TEST(OpeningFaults, AFailingReadAfterTheFirstFramesLeavesThem) {
    OpenedModel opened;
    opened.world.files.put(kSong, song());
    // The record, the head of the file, then the picture.
    opened.world.files.fail({.nth = 3, .call = FileCall::Read, .from_then_on = true});
    opened.model.FileName(kSong);
    EXPECT_TRUE(opened.model.HasID3v2Tag());
    EXPECT_EQ(opened.model.TotalId3v2TagLen(), 70000);
    EXPECT_EQ(opened.model.Title(), u"A title that does not fit into a small buffer");
    EXPECT_EQ(opened.model.CueIn(), 1500);
    EXPECT_EQ(opened.model.Artist(), u"");
    EXPECT_EQ(opened.model.Duration(), -1);
}

TEST(OpeningFaults, AFileWhoseLengthCannotBeReadIsIncomplete) {
    OpenedModel opened;
    opened.world.files.put(kSong, song());
    opened.world.files.fail({.nth = 1, .call = FileCall::Length});
    EXPECT_NO_THROW(opened.model.FileName(kSong)) << "only an open failure is raised";
    EXPECT_EQ(opened.model.FileName(), kSong);
    EXPECT_EQ(opened.model.FrameCount(), 0);
    opened.world.files.fail_nothing();
    expect_save_keeps_the_tag(opened, 1);
}

TEST(OpeningFaults, AFailingOpenIsTheOnlyFaultThatIsRaised) {
    for (const RuntimeError number :
         {RuntimeError::PermissionDenied, RuntimeError::TooManyFiles, RuntimeError::PathFileAccess,
          RuntimeError::DeviceInputOutput}) {
        OpenedModel opened;
        opened.world.files.put(kSong, song());
        opened.world.files.fail({.nth = 1, .call = FileCall::Open, .error = Error(number)});
        try {
            opened.model.FileName(kSong);
            FAIL() << "nothing was raised";
        } catch (const Error& error) {
            EXPECT_EQ(error.number(), static_cast<std::int32_t>(number));
            EXPECT_EQ(error.description(), Error(number).description());
            EXPECT_EQ(error.source(), u"BrindleId3v1Tagger");
        }
    }
}

// Another program had it locked for a moment: nothing of it was read, so nothing may be written.
TEST(OpeningFaults, WhatCouldNotBeOpenedIsNotSavedOver) {
    OpenedModel opened;
    opened.world.files.put(kSong, song());
    opened.world.files.fail(
        {.nth = 1, .call = FileCall::Open, .error = Error(RuntimeError::PermissionDenied)});
    EXPECT_THROW(opened.model.FileName(kSong), Error);
    opened.model.Title(u"Another");
    EXPECT_THROW(opened.model.Update(), Error);
    EXPECT_EQ(opened.world.files.content(kSong), song());
}

TEST(OpeningFaults, AFileCutWhileItIsReadEndsThere) {
    OpenedModel opened;
    opened.world.files.put(kSong, song());
    opened.world.files.fail({.nth = 2,
                             .call = FileCall::Read,
                             .from_then_on = true,
                             .kind = test::Fault::Kind::Shorten});
    EXPECT_NO_THROW(opened.model.FileName(kSong));
    EXPECT_EQ(opened.model.Title(), u"A title that does not fit into a small buffer");
}

// Memory that runs out while a file is opened: no crash, no leak, nothing but bad_alloc; and a
// store that is not whole is never saved over a tag that is.
TEST(OpeningFaults, MemoryThatRunsOutNeverCostsATagItsFrames) {
    for_each_failing_allocation(9, 2000, [](FailingAllocation failing) {
        OpenedModel opened;
        opened.world.files.put(kSong, song());
        std::int32_t number = 0;
        const FaultyRun run =
            failing.run([&] { number = error_number([&] { opened.model.FileName(kSong); }); });
        EXPECT_TRUE(number == 0 || number == 7) << number;
        if (run.has_failed) {
            expect_save_keeps_the_tag(opened, failing.nth);
        }
        return run.has_failed;
    });
}

TEST(OpeningFaults, MemoryThatRunsOutInTheMiddleOfAnEditRaisesNothingElse) {
    for_each_failing_allocation(3, 500, [](FailingAllocation failing) {
        OpenedModel opened(song());
        return failing
            .run([&] {
                opened.model.Title(u"Another title of more than a few letters");
                opened.model.CueIn(2000);
                opened.model.AddCustomField(u"A new field of the host", u"with a value of its own");
                opened.model.RemoveFrame(String(u"TPE1"));
            })
            .has_failed;
    });
}

}  // namespace
}  // namespace brindle
