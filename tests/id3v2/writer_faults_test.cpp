// Each file operation and each allocation of a save or a strip fails in turn. What fails leaves the
// old file byte for byte, but for two cases of a save in place: when the flush fails all is
// written, and when even writing back fails, the error says that the file holds part of the new
// bytes.
#include <algorithm>
#include <functional>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <brindle/error.h>
#include <brindle/save_options.h>

#include "id3v2/cMP3ID3v2.h"
#include "support/bytes.h"
#include "support/failing_allocation.h"
#include "support/frames.h"
#include "support/id3v1.h"
#include "support/memory_environment.h"
#include "support/raised_error.h"
#include "support/tags.h"
#include "support/written_files.h"

namespace brindle {
namespace {

using namespace std::string_literals;
using test::Bytes;
using test::Fault;
using test::FileCall;
using test::Id3v1;
using test::LoggedCall;
using test::stamped;
using test::Tag;

// Short enough that the log of calls takes no memory for it: of that the saving alone is short.
const String kName = u"a.mp3";
const Bytes kAudio = test::stream({}, 120);
const Bytes kRecord = Id3v1{.title = "Old", .filler = ' '}.bytes();

struct Scenario {
    const char* name;
    Bytes old;
    Bytes result;
    std::function<void(cMP3ID3v2&)> edit;
    // 0: a save; else what is stripped.
    std::int32_t strips = 0;
    SaveOptions options = {};

    // Of all that stays; the tags are shorter.
    [[nodiscard]] std::string audio() const { return old.last(5000).first(4000).text(); }
};

void PrintTo(const Scenario& scenario, std::ostream* stream) {
    *stream << scenario.name;
}

void set_title(cMP3ID3v2& model) {
    model.Title(u"Song");
}
void nothing(cMP3ID3v2& /*model*/) {}

Tag titled() {
    return stamped(Tag().text("TIT2", "Song"));
}

std::vector<Scenario> saves() {
    const Bytes roomy = Tag().padded_to(600).bytes();
    const Bytes tight = Tag().padded_to(60).bytes();
    const Bytes version2 = Tag(2).text("TT2", "Song").text("TAL", "Disc").padded_to(500).bytes();
    const Tag converted = stamped(Tag().text("TPE1", "").text("TIT2", "Song").text("TYER", ""));
    const Bytes junk = test::repeated(6000, 0x55);
    const Bytes blank = test::blank_record();
    const Bytes new_record = Id3v1{.title = "New", .filler = ' '}.bytes();
    return {
        {"InPlaceWithItsFirstRecord", roomy + kAudio,
         titled().padded_to(600).bytes() + kAudio + blank, set_title},
        {"InPlaceOverARecord", roomy + kAudio + kRecord,
         titled().padded_to(600).bytes() + kAudio + new_record,
         [](cMP3ID3v2& model) {
             set_title(model);
             // Its length known: else g++ 12 fears, at -O3, a read beyond its end.
             model.Titlev1Tag(u"New"s);
         }},
        {"RebuiltFromATag", tight + kAudio, titled().padded_to(2048).bytes() + kAudio + blank,
         set_title},
        {"RebuiltOverARecord", tight + kAudio + kRecord,
         titled().padded_to(2048).bytes() + kAudio + kRecord, set_title},
        {"RebuiltWithoutATag", kAudio, titled().padded_to(2048).bytes() + kAudio + blank,
         set_title},
        {"RebuiltOfTwoPieces", test::stream({}, 800),
         titled().padded_to(2048).bytes() + test::stream({}, 800) + blank, set_title},
        {"ConvertedFromVersion2", version2 + kAudio,
         Tag(converted).padded_to(2048).bytes() + kAudio + blank, nothing},
        {"ConvertedFromVersion2WithoutAudio", version2 + junk,
         Tag(converted).padded_to(2048).bytes() + junk + blank, nothing},
        {"ConvertedInFrontOfAnotherTag", version2 + roomy + junk,
         Tag(converted).padded_to(600).bytes() + junk + blank, nothing},
        {"AtomicInPlaceWithItsFirstRecord",
         roomy + kAudio,
         titled().padded_to(600).bytes() + kAudio + blank,
         set_title,
         0,
         {.atomic = true}},
        {"AtomicInPlaceOverARecord",
         roomy + kAudio + kRecord,
         titled().padded_to(600).bytes() + kAudio + kRecord,
         set_title,
         0,
         {.atomic = true}},
    };
}

std::vector<Scenario> strips() {
    const Bytes tag = Tag().text("TIT2", "Song").padded_to(600).bytes();
    const Bytes old = tag + kAudio + kRecord;
    return {
        {"StripOfTheRecord", old, tag + kAudio, nothing, 1},
        {"StripOfTheTag", old, kAudio + kRecord, nothing, 2},
        {"StripOfBoth", old, kAudio, nothing, 3},
    };
}

// What came of one attempt.
struct Outcome {
    std::optional<Error> error;
    bool stripped = false;
    bool out_of_memory = false;
};

class World {
public:
    explicit World(const Scenario& scenario) : scenario_(scenario) {
        world_.files.put(kName, scenario.old);
        model_.FileName(kName);
        scenario.edit(model_);
        world_.files.reset_counts();
    }

    Outcome attempt() {
        Outcome outcome;
        try {
            if (scenario_.strips != 0) {
                outcome.stripped = model_.StripTags(scenario_.strips);
            } else {
                model_.Update(scenario_.options);
            }
        } catch (const Error& error) {
            outcome.error = error;
        } catch (const std::bad_alloc&) {
            outcome.out_of_memory = true;
        }
        return outcome;
    }

    test::MemoryFiles& files() { return world_.files; }
    [[nodiscard]] const Bytes& content() const { return world_.files.content(kName); }
    [[nodiscard]] bool holds_only_the_file() const {
        return world_.files.names() == std::vector<String>{kName};
    }

private:
    const Scenario& scenario_;
    test::MemoryEnvironment world_;
    cMP3ID3v2 model_{world_.environment};
};

// The calls of the work when nothing goes wrong.
std::vector<LoggedCall> calls_of(const Scenario& scenario) {
    World world(scenario);
    const Outcome outcome = world.attempt();
    EXPECT_FALSE(outcome.error);
    EXPECT_EQ(outcome.stripped, scenario.strips != 0);
    EXPECT_EQ(world.content(), scenario.result);
    return world.files().log();
}

constexpr std::size_t kNone = static_cast<std::size_t>(-1);

// The number of the n-th such call on the file itself, from 1 on.
std::size_t place_of(const std::vector<LoggedCall>& calls, FileCall call, std::size_t nth = 1) {
    for (std::size_t place = 0; place < calls.size(); ++place) {
        if (calls[place].call == call && calls[place].name == kName && --nth == 0) {
            return place + 1;
        }
    }
    return kNone;
}

// Makes the attempt once for each allocation of it, which fails, alone or with all later ones, and
// once with none that fails.
template <typename Check>
void attempt_without_each_allocation(const Scenario& scenario, Check check) {
    test::for_each_failing_allocation(4, 5000, [&](test::FailingAllocation failing) {
        World world(scenario);
        Outcome outcome;
        const test::FaultyRun run = failing.run([&] { outcome = world.attempt(); });
        EXPECT_TRUE(run.completed) << "an attempt catches what a save raises";
        EXPECT_EQ(world.files().open_files(), 0U);
        if (!failing.from_then_on) {
            EXPECT_TRUE(world.holds_only_the_file());
        }
        check(world, outcome, run.has_failed);
        return run.has_failed;
    });
}

class Faults : public ::testing::TestWithParam<Scenario> {};
class SaveFaults : public Faults {};
class StripFaults : public Faults {};

// What the failing call of a save is to the file.
enum class Moment { BeforeAnyWrite, WritingInPlace, AfterWritingInPlace, AfterTheRename };

Moment moment_of(const std::vector<LoggedCall>& calls, std::size_t nth) {
    const std::size_t first_write = place_of(calls, FileCall::Write);
    const std::size_t flush = place_of(calls, FileCall::FlushData);
    const std::size_t replace = place_of(calls, FileCall::Replace);
    if (replace != kNone) {
        return nth > replace ? Moment::AfterTheRename : Moment::BeforeAnyWrite;
    }
    if (nth < first_write) {
        return Moment::BeforeAnyWrite;
    }
    return nth < flush ? Moment::WritingInPlace : Moment::AfterWritingInPlace;
}

TEST_P(SaveFaults, EachFailingCallLeavesTheOldFileAndRaisesItsError) {
    const Scenario& scenario = GetParam();
    const std::vector<LoggedCall> calls = calls_of(scenario);
    for (const bool from_then_on : {false, true}) {
        for (std::size_t nth = 1; nth <= calls.size(); ++nth) {
            const FileCall failing = calls[nth - 1].call;
            for (const std::size_t bytes_before : {0U, 1U, 50U, 124U}) {
                if (bytes_before != 0 && failing != FileCall::Write && failing != FileCall::Copy) {
                    continue;
                }
                SCOPED_TRACE(std::to_string(nth) + " of " + std::to_string(calls.size()) + ": " +
                             std::string(test::name_of(failing)) + " after " +
                             std::to_string(bytes_before) +
                             (from_then_on ? " from then on" : " once"));
                World world(scenario);
                world.files().fail({.nth = nth,
                                    .from_then_on = from_then_on,
                                    .error = Error(61, u"planned", u"the disk"),
                                    .bytes_before = bytes_before});
                const Outcome outcome = world.attempt();
                ASSERT_TRUE(world.files().has_failed());
                const std::uint64_t removals = world.files().calls(FileCall::Remove);
                world.files().fail_nothing();
                EXPECT_FALSE(outcome.out_of_memory);
                EXPECT_EQ(world.files().open_files(), 0U);
                // A removal that failed too leaves what it should have removed.
                EXPECT_EQ(world.holds_only_the_file(), !from_then_on || removals == 0);

                const Moment moment = moment_of(calls, nth);
                const bool is_undone = moment == Moment::BeforeAnyWrite ||
                                       (moment == Moment::WritingInPlace && !from_then_on);
                if (moment == Moment::AfterTheRename ||
                    (failing == FileCall::Clone && !from_then_on)) {
                    EXPECT_FALSE(outcome.error);
                    EXPECT_EQ(world.content(), scenario.result);
                } else if (moment == Moment::AfterWritingInPlace) {
                    ASSERT_TRUE(outcome.error);
                    EXPECT_EQ(outcome.error->number(), 57);
                    EXPECT_EQ(outcome.error->description(),
                              u"Device I/O error: written, but perhaps not on the device");
                    EXPECT_EQ(world.content(), scenario.result);
                } else {
                    ASSERT_TRUE(outcome.error);
                    EXPECT_EQ(outcome.error->number(), 61);
                    EXPECT_EQ(outcome.error->description().substr(0, 7), u"planned");
                    EXPECT_TRUE(outcome.error->source() == u"BrindleID3v2Tagger" ||
                                outcome.error->source() == u"BrindleId3v1Tagger");
                    EXPECT_TRUE(nth != 1 || outcome.error->source() == u"BrindleId3v1Tagger");
                    EXPECT_TRUE(world.content() == scenario.old ||
                                outcome.error->description() != u"planned");
                }
                if (is_undone && outcome.error) {
                    EXPECT_EQ(world.content(), scenario.old);
                }
                EXPECT_NE(world.content().text().find(scenario.audio()), std::string::npos);
                if (is_undone) {
                    EXPECT_FALSE(world.attempt().error);
                    EXPECT_EQ(world.content(), scenario.result);
                }
            }
        }
    }
}

TEST_P(SaveFaults, ReadsAndCopiesThatHandOverLessLoseNothing) {
    const Scenario& scenario = GetParam();
    const std::vector<LoggedCall> calls = calls_of(scenario);
    for (const bool from_then_on : {false, true}) {
        for (std::size_t nth = 1; nth <= calls.size(); ++nth) {
            const FileCall failing = calls[nth - 1].call;
            if (failing != FileCall::Read && failing != FileCall::Copy) {
                continue;
            }
            SCOPED_TRACE(std::to_string(nth) + ": " + std::string(test::name_of(failing)) +
                         (from_then_on ? " from then on" : " once"));
            World world(scenario);
            world.files().fail(
                {.nth = nth, .from_then_on = from_then_on, .kind = Fault::Kind::Shorten});
            const Outcome outcome = world.attempt();
            world.files().fail_nothing();
            EXPECT_TRUE(world.holds_only_the_file());
            // A reader that is shown half a file takes it for what it is shown; the audio stays.
            const Bytes& content = world.content();
            if (outcome.error) {
                EXPECT_EQ(content, scenario.old);
            } else if (failing == FileCall::Copy) {
                EXPECT_EQ(content, scenario.result);
            }
            EXPECT_NE(content.text().find(scenario.audio()), std::string::npos);
        }
    }
}

TEST_P(SaveFaults, EachFailingAllocationLeavesAKnownFile) {
    const Scenario& scenario = GetParam();
    attempt_without_each_allocation(
        scenario, [&](World& world, const Outcome& outcome, bool has_failed) {
            const Bytes& content = world.content();
            if (outcome.error || outcome.out_of_memory) {
                EXPECT_TRUE(has_failed);
                EXPECT_EQ(content, scenario.old);
                EXPECT_FALSE(outcome.out_of_memory);
                if (outcome.error) {
                    EXPECT_EQ(outcome.error->number(), 7);
                    EXPECT_EQ(outcome.error->source(), u"BrindleID3v2Tagger");
                }
                // Saved again, or refused again because an edit in memory was lost; never less.
                const Outcome again = world.attempt();
                EXPECT_TRUE(again.error ? again.error->number() == 7
                                        : world.content() == scenario.result);
            } else {
                EXPECT_EQ(content, scenario.result);
            }
        });
}

TEST_P(StripFaults, EachFailingCallLeavesTheOldFileAndIsFalse) {
    const Scenario& scenario = GetParam();
    const std::vector<LoggedCall> calls = calls_of(scenario);
    const std::size_t replace = place_of(calls, FileCall::Replace);
    ASSERT_NE(replace, kNone);
    for (const bool from_then_on : {false, true}) {
        for (std::size_t nth = 1; nth <= calls.size(); ++nth) {
            for (const std::size_t bytes_before : {0U, 50U}) {
                const FileCall failing = calls[nth - 1].call;
                SCOPED_TRACE(std::to_string(nth) + " of " + std::to_string(calls.size()) + ": " +
                             std::string(test::name_of(failing)) + " after " +
                             std::to_string(bytes_before) +
                             (from_then_on ? " from then on" : " once"));
                World world(scenario);
                world.files().fail({.nth = nth,
                                    .from_then_on = from_then_on,
                                    .error = Error(RuntimeError::DiskFull),
                                    .bytes_before = bytes_before});
                const Outcome outcome = world.attempt();
                ASSERT_TRUE(world.files().has_failed());
                const std::uint64_t removals = world.files().calls(FileCall::Remove);
                world.files().fail_nothing();
                EXPECT_FALSE(outcome.error);
                EXPECT_FALSE(outcome.out_of_memory);
                EXPECT_EQ(world.files().open_files(), 0U);
                EXPECT_EQ(world.holds_only_the_file(), !from_then_on || removals == 0);
                // After the rename it is done, whatever keeps the file from being read again.
                EXPECT_EQ(outcome.stripped, nth > replace);
                EXPECT_EQ(world.content(), nth > replace ? scenario.result : scenario.old);
                if (!from_then_on) {
                    EXPECT_TRUE(world.attempt().stripped);
                    EXPECT_EQ(world.content(), scenario.result);
                }
            }
        }
    }
}

TEST_P(StripFaults, EachFailingAllocationLeavesAKnownFile) {
    const Scenario& scenario = GetParam();
    attempt_without_each_allocation(
        scenario, [&](World& world, const Outcome& outcome, bool /*has_failed*/) {
            const Bytes& content = world.content();
            EXPECT_FALSE(outcome.error);
            EXPECT_FALSE(outcome.out_of_memory);
            EXPECT_EQ(content, outcome.stripped ? scenario.result : scenario.old);
        });
}

// A file that could not be read whole, for want of memory, is never written from what was read.
TEST(OpeningWithoutMemory, IsNeverSavedShort) {
    const Bytes old = Tag()
                          .text("TIT2", "Song")
                          .field("Cue In", "1500")
                          .comment("eng", "", "Hi")
                          .picture("image/png", 3, "", test::repeated(3000, 0x42))
                          .padded_to(9000)
                          .bytes() +
                      kAudio + kRecord;
    test::MemoryEnvironment good;
    good.files.put(kName, old);
    cMP3ID3v2 model(good.environment);
    model.FileName(kName);
    model.Update();
    const Bytes result = good.files.content(kName);
    test::for_each_failing_allocation(4, 5000, [&](test::FailingAllocation failing) {
        test::MemoryEnvironment world;
        world.files.put(kName, old);
        cMP3ID3v2 poor(world.environment);
        const test::FaultyRun run = failing.run(
            [&] { static_cast<void>(test::error_number([&] { poor.FileName(kName); })); });
        const std::int32_t number = test::error_number([&] { poor.Update(); });
        if (number == 0) {
            // Nothing was missing; or there was not even a name.
            EXPECT_TRUE(world.files.content(kName) == result ||
                        (poor.FileName().empty() && world.files.content(kName) == old));
        } else {
            EXPECT_EQ(number, 7);
            EXPECT_EQ(world.files.content(kName), old);
        }
        return run.has_failed;
    });
}

const auto name_of_scenario = [](const auto& run) { return std::string(run.param.name); };
INSTANTIATE_TEST_SUITE_P(Writer, SaveFaults, ::testing::ValuesIn(saves()), name_of_scenario);
INSTANTIATE_TEST_SUITE_P(Writer, StripFaults, ::testing::ValuesIn(strips()), name_of_scenario);

}  // namespace
}  // namespace brindle
