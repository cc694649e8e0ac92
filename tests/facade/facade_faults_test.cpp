#include <cstdint>
#include <optional>

#include <gtest/gtest.h>

#include <brindle/cMPEGHeader.h>

#include "facade/loaded_header.h"
#include "support/failing_allocation.h"

namespace brindle {
namespace {

using test::audio;
using test::Bytes;
using test::FailingAllocation;
using test::FaultyRun;
using test::for_each_failing_allocation;
using test::Id3v1;
using test::kSong;
using test::LoadedHeader;
using test::Tag;

const String kOther = u"another song of a longer name.mp3";

Bytes song() {
    return Tag(3)
               .text("TIT2", "A title that does not fit into a small buffer")
               .field("Agency", "An agency that does not fit either")
               .field("Intro", "12345678")
               .comment("eng", "", "A comment of some length")
               .padded_to(600) +
           audio() + Id3v1{.title = "A title of the record", .artist = "An artist"}.bytes();
}

// Arguments are made before memory runs out: they are the host's.
const String kAbsentField = u"A field that does not exist";
const String kAgencyField = u"Agency";
const String kTitleFrame = u"TIT2";
const String kAbsentFrame = u"A frame id of some length";

void read_everything(const cMPEGHeader& header) {
    (void)header.MonoStereo();
    (void)header.BitRate();
    (void)header.FileName();
    (void)header.Speed();
    (void)header.Volume();
    (void)header.Opener();
    (void)header.CueInmSStart();
    (void)header.CategoryLevel();
    (void)header.TagType();
    (void)header.CustomFieldExists(kAbsentField);
    (void)header.CustomFieldRetrieve(kAgencyField);
    (void)header.VBR();
    (void)header.Duration();
    (void)header.Frequency();
    (void)header.FrameCount();
    (void)header.Title();
    (void)header.NoFade();
    (void)header.Composer();
    (void)header.Agency();
    (void)header.AccountExec();
    (void)header.URL();
    (void)header.Artist();
    (void)header.Sectone();
    (void)header.Intro();
    (void)header.Category();
    (void)header.Album();
    (void)header.Track();
    (void)header.Year();
    (void)header.Comments();
    (void)header.Endstyle();
    (void)header.OutromsStart();
    (void)header.Genre();
    (void)header.artistv1Tag();
    (void)header.Titlev1Tag();
    (void)header.Yearv1Tag();
    (void)header.Commentv1();
    (void)header.ElapsedTimeFromMs(62345, ShowAll);
    (void)header.v2Frames();
    (void)header.v2Tag(kTitleFrame, 1);
    (void)header.TagsInFrame(kAbsentFrame);
    (void)header.RepairRequired();
    (void)header.ID3TagSizeIncludingHeader();
    (void)header.MpegVersion();
}

struct Arguments {
    String text = u"A text that does not fit into a small buffer";
    Variant value = text;
    Variant number = 1234567890.125;
};

void assign_everything(cMPEGHeader& header, const Arguments& with) {
    header.Title(with.text);
    header.Artist(with.text);
    header.Album(with.text);
    header.Year(-12345);
    header.Track(-12345);
    header.Genre(with.text);
    header.Comments(with.text);
    header.Composer(with.text);
    header.URL(with.text);
    header.Speed(0.1234567890123);
    header.Volume(-1234567890);
    header.Opener(1);
    header.CueInmSStart(-1234567890);
    header.Sectone(-1234567890);
    header.CategoryLevel(with.text);
    header.Agency(with.text);
    header.Category(with.number);
    header.NoFade(-12345);
    header.Intro(-1234567890);
    header.OutromsStart(-1234567890);
    header.CustomFieldAdd(with.text, with.value);
    header.Titlev1Tag(with.text);
    header.Commentv1(with.text);
    header.Yearv1Tag(-12345);
}

// Whether an allocation of a statement failed. The statement must still complete.
template <typename Statement>
bool fails_silently(FailingAllocation failing, Statement&& statement) {
    const FaultyRun run = failing.run(statement);
    EXPECT_TRUE(run.completed);
    return run.has_failed;
}

TEST(FacadeFaults, FailedAllocationsWhileAFileIsLoadedRaiseNothing) {
    for_each_failing_allocation(2, 3000, [](FailingAllocation failing) {
        LoadedHeader loaded;
        loaded.world.files.put(kSong, song());
        const bool failed = fails_silently(failing, [&] { loaded.header.FileName(kSong); });
        EXPECT_TRUE(loaded.header.g_InUse());
        if (loaded.header.FileName().empty()) {
            const std::optional<Error> error = loaded.header.OpeningError();
            EXPECT_TRUE(error && error->number() == 7);
        }
        read_everything(loaded.header);
        return failed;
    });
}

TEST(FacadeFaults, MemoryThatRunsOutNeverShowsTheFileBefore) {
    for_each_failing_allocation(2, 3000, [](FailingAllocation failing) {
        LoadedHeader loaded(song());
        loaded.world.files.put(kOther, Tag(3).text("TPE1", "x").padded_to(300) + audio());
        const bool failed = fails_silently(failing, [&] { loaded.header.FileName(kOther); });
        // A frame that there is no memory for counts as corrupt, which the title then tells.
        EXPECT_TRUE(loaded.header.Title().empty() ||
                    loaded.header.Title().starts_with(u"Corrupt ID3v2 Tag"));
        EXPECT_EQ(loaded.header.Agency(), u"");
        EXPECT_EQ(loaded.header.Comments(), u"");
        EXPECT_NE(loaded.header.FileName(), kSong);
        return failed;
    });
}

TEST(FacadeFaults, FailedAllocationsWhilePropertiesAreReadRaiseNothing) {
    const LoadedHeader loaded(song());
    for_each_failing_allocation(2, 3000, [&](FailingAllocation failing) {
        return fails_silently(failing, [&] { read_everything(loaded.header); });
    });
}

TEST(FacadeFaults, FailedAllocationsWhilePropertiesAreAssignedRaiseNothing) {
    const Arguments arguments;
    for_each_failing_allocation(2, 3000, [&](FailingAllocation failing) {
        LoadedHeader loaded(song());
        const bool failed =
            fails_silently(failing, [&] { assign_everything(loaded.header, arguments); });
        read_everything(loaded.header);
        return failed;
    });
}

TEST(FacadeFaults, EveryFileCallMayFailWhileAFileIsLoaded) {
    LoadedHeader whole(song());
    const std::uint64_t calls = whole.world.files.calls();
    for (std::uint64_t nth = 1; nth <= calls; ++nth) {
        for (const bool from_then_on : {false, true}) {
            LoadedHeader loaded;
            loaded.world.files.put(kSong, song());
            loaded.world.files.fail({.nth = nth, .from_then_on = from_then_on});
            EXPECT_NO_THROW(loaded.header.FileName(kSong)) << nth;
            EXPECT_NO_THROW(read_everything(loaded.header)) << nth;
            EXPECT_EQ(loaded.world.files.open_files(), 0U);
        }
    }
}

}  // namespace
}  // namespace brindle
