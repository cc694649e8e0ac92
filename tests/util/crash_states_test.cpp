// Short logs and, by hand, all states that they may leave. A sector has two bytes here, and a state
// is written down as "name=content" of each file.
#include "support/crash_states.h"

#include <ostream>
#include <set>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <brindle/text.h>

#include "support/bytes.h"
#include "support/file_operation.h"
#include "support/memory_files.h"

namespace brindle {
namespace {

using test::Bytes;
using test::Created;
using test::FileOperation;
using test::Flushed;
using test::Folder;
using test::FolderFlushed;
using test::LengthSet;
using test::Removed;
using test::Renamed;
using test::Written;

using States = std::set<std::string>;

const String kA = u"a";
const String kB = u"b";

// NULs are shown as dots.
std::string text_of(const Folder& folder) {
    std::string text;
    for (const auto& [name, content] : folder) {
        text += (text.empty() ? "" : " ") + to_utf8(name) + "=";
        for (const std::uint8_t byte : content) {
            text += byte == 0 ? '.' : static_cast<char>(byte);
        }
    }
    return text;
}

struct Case {
    const char* name;
    Folder before;
    std::vector<FileOperation> operations;
    States states;
    // Those that are possible after the last operation.
    States finished;
};

void PrintTo(const Case& row, std::ostream* stream) {
    *stream << row.name;
}

States states_of(const Case& row, bool finished, test::CrashStateOptions options) {
    States found;
    test::for_each_crash_state(row.before, row.operations, options,
                               [&](const test::CrashState& state) {
                                   if (state.finished || !finished) {
                                       found.insert(text_of(state.files));
                                   }
                               });
    return found;
}

const Case kCases[] = {
    {"Nothing", {{kA, "x"}}, {}, {"a=x"}, {"a=x"}},
    {"OneSector", {{kA, "xy"}}, {Written{kA, 0, "AB"}}, {"a=xy", "a=AB"}, {"a=xy", "a=AB"}},
    {"FlushedSector",
     {{kA, "xy"}},
     {Written{kA, 0, "AB"}, Flushed{kA}},
     {"a=xy", "a=AB"},
     {"a=AB"}},
    {"WriteIsTornAtSectors",
     {{kA, "uvwxyz"}},
     {Written{kA, 0, "ABCDEF"}, Flushed{kA}},
     // Whole or nothing; first parts; last parts; the one in the middle.
     {"a=uvwxyz", "a=ABCDEF", "a=ABwxyz", "a=ABCDyz", "a=uvwxEF", "a=uvCDEF", "a=uvCDyz"},
     {"a=ABCDEF"}},
    {"SectorsAreThoseOfTheFile",
     {{kA, "uvwx"}},
     {Written{kA, 1, "BC"}},
     {"a=uvwx", "a=uBCx", "a=uBwx", "a=uvCx"},
     {"a=uvwx", "a=uBCx", "a=uBwx", "a=uvCx"}},
    {"TwoWritesInAnyOrder",
     {{kA, "uvwx"}},
     {Written{kA, 0, "AB"}, Written{kA, 2, "CD"}, Flushed{kA}},
     {"a=uvwx", "a=ABwx", "a=uvCD", "a=ABCD"},
     {"a=ABCD"}},
    {"FlushBetweenTwoWrites",
     {{kA, "uvwx"}},
     {Written{kA, 0, "AB"}, Flushed{kA}, Written{kA, 2, "CD"}, Flushed{kA}},
     {"a=uvwx", "a=ABwx", "a=ABCD"},
     {"a=ABCD"}},
    {"LaterWriteOfASectorWins",
     {{kA, "xy"}},
     {Written{kA, 0, "AB"}, Written{kA, 0, "CD"}},
     {"a=xy", "a=AB", "a=CD"},
     {"a=xy", "a=AB", "a=CD"}},
    {"AppendedBytesOrTheirLength",
     {{kA, "xy"}},
     {Written{kA, 2, "ABCD"}, Flushed{kA}},
     {"a=xy", "a=xyABCD", "a=xyAB", "a=xy..CD", "a=xy...."},
     {"a=xyABCD"}},
    {"LengthIsSetOrNot",
     {{kA, "uvwx"}},
     {LengthSet{kA, 2}, Flushed{kA}},
     {"a=uvwx", "a=uv"},
     {"a=uv"}},
    {"LengthAndWriteAreIndependent",
     {{kA, "uvwx"}},
     {LengthSet{kA, 2}, Written{kA, 0, "AB"}},
     {"a=uvwx", "a=uv", "a=ABwx", "a=AB"},
     {"a=uvwx", "a=uv", "a=ABwx", "a=AB"}},
    {"FlushIsOfOneFile",
     {{kA, "uv"}, {kB, "xy"}},
     {Written{kB, 0, "CD"}, Written{kA, 0, "AB"}, Flushed{kB}},
     {"a=uv b=xy", "a=AB b=xy", "a=uv b=CD", "a=AB b=CD"},
     {"a=uv b=CD", "a=AB b=CD"}},
    {"CreatedFileNeedsAFlushOfTheFolder",
     {},
     {Created{kA}, Written{kA, 0, "AB"}, Flushed{kA}},
     {"", "a=", "a=AB", "a=.."},
     {"", "a=AB"}},
    {"FlushOfTheFolderKeepsTheNameOnly",
     {},
     {Created{kA}, Written{kA, 0, "AB"}, FolderFlushed{}},
     {"", "a=", "a=AB", "a=.."},
     {"a=", "a=AB", "a=.."}},
    {"RemovedFileMayBeBack", {{kA, "xy"}}, {Removed{kA}, FolderFlushed{}}, {"a=xy", ""}, {""}},
    {"RenameMayComeBeforeTheContent",
     {{kA, "xy"}},
     {Created{kB}, Written{kB, 0, "AB"}, Renamed{kB, kA}, FolderFlushed{}},
     {"a=xy", "a=xy b=", "a=xy b=AB", "a=xy b=..", "a=", "a=AB", "a=.."},
     {"a=", "a=AB", "a=.."}},
    {"ReplacedFileIsOldOrNew",
     {{kA, "xy"}},
     {Created{kB}, Written{kB, 0, "AB"}, Flushed{kB}, Renamed{kB, kA}, FolderFlushed{}},
     {"a=xy", "a=xy b=", "a=xy b=AB", "a=xy b=..", "a=AB"},
     {"a=AB"}},
    {"ReplacedFileWithoutAFlushOfTheFolder",
     {{kA, "xy"}},
     {Created{kB}, Written{kB, 0, "AB"}, Flushed{kB}, Renamed{kB, kA}},
     {"a=xy", "a=xy b=", "a=xy b=AB", "a=xy b=..", "a=AB"},
     {"a=xy", "a=xy b=AB", "a=AB"}},
    {"OperationsOfAFolderKeepTheirOrder",
     {{kA, "x"}, {kB, "y"}},
     {Removed{kA}, Removed{kB}},
     {"a=x b=y", "b=y", ""},
     {"a=x b=y", "b=y", ""}},
    {"FlushedContentFollowsTheFile",
     {{kA, "xy"}},
     {Written{kA, 0, "AB"}, Renamed{kA, kB}, Flushed{kB}, FolderFlushed{}},
     {"a=xy", "a=AB", "b=xy", "b=AB"},
     {"b=AB"}},
};

class CrashStates : public ::testing::TestWithParam<Case> {};

TEST_P(CrashStates, AreThoseOfTheTable) {
    const Case& row = GetParam();
    const test::CrashStateOptions options{.sector = 2, .samples = 0};
    EXPECT_EQ(states_of(row, false, options), row.states);
    EXPECT_EQ(states_of(row, true, options), row.finished);
}

INSTANTIATE_TEST_SUITE_P(OfShortLogs, CrashStates, ::testing::ValuesIn(kCases),
                         [](const auto& row) { return row.param.name; });

// Every way to put together the file from one text of each list.
States all_of(const std::vector<std::vector<std::string>>& lists) {
    States states{"a="};
    for (const auto& list : lists) {
        States longer;
        for (std::string state : states) {
            const std::size_t length = state.size();
            for (const std::string& text : list) {
                state.resize(length);
                longer.insert(state.append(text));
            }
        }
        states = longer;
    }
    return states;
}

TEST(CrashStateSamples, HaveAnySectorsOfAWrite) {
    const Case row{"", {{kA, "stuvwxyz"}}, {Written{kA, 0, "ABCDEFGH"}, Flushed{kA}}, {}, {}};
    const States expected = all_of({{"st", "AB"}, {"uv", "CD"}, {"wx", "EF"}, {"yz", "GH"}});
    EXPECT_EQ(states_of(row, false, {.sector = 2}), expected);
    EXPECT_LT(states_of(row, false, {.sector = 2, .samples = 0}).size(), expected.size());
}

// All combinations of the parts of two writes.
TEST(CrashStateSamples, CombineTornWrites) {
    const Case row{"",
                   {{kA, "stuvwxyz"}},
                   {Written{kA, 0, "ABCD"}, Written{kA, 4, "EFGH"}, Flushed{kA}},
                   {},
                   {}};
    const States expected =
        all_of({{"stuv", "ABCD", "ABuv", "stCD"}, {"wxyz", "EFGH", "EFyz", "wxGH"}});
    EXPECT_EQ(states_of(row, false, {.sector = 2}), expected);
    EXPECT_LT(states_of(row, false, {.sector = 2, .samples = 0}).size(), expected.size());
}

TEST(CrashStateSamples, AreTheSameForTheSameSeed) {
    const Case row{"", {{kA, Bytes(test::zeros(64))}}, {}, {}, {}};
    Case written = row;
    for (std::size_t i = 0; i < 16; ++i) {
        written.operations.emplace_back(Written{kA, 4 * i, "ABCD"});
    }
    EXPECT_EQ(states_of(written, false, {.sector = 2, .samples = 20}),
              states_of(written, false, {.sector = 2, .samples = 20}));
    EXPECT_NE(states_of(written, false, {.sector = 2, .samples = 20}),
              states_of(written, false, {.sector = 2, .samples = 20, .seed = 2}));
}

// More than can be combined: the first ones in order are kept.
TEST(CrashStateSubsets, AreFirstPartsOfManyWrites) {
    Case row{"", {{kA, "...."}}, {}, {}, {}};
    for (const char* letter : {"A", "B", "C", "D"}) {
        row.operations.emplace_back(Written{kA, row.operations.size(), letter});
    }
    const test::CrashStateOptions all{.sector = 1, .max_combined_writes = 4, .samples = 0};
    EXPECT_EQ(states_of(row, false, all).size(), 16U);
    const test::CrashStateOptions few{.sector = 1, .max_combined_writes = 3, .samples = 0};
    // In order; and each write, or its length alone, with all others and with none of them.
    EXPECT_EQ(states_of(row, false, few),
              (States{"a=....", "a=A...", "a=AB..", "a=ABC.", "a=ABCD", "a=.B..", "a=..C.",
                      "a=...D", "a=.BCD", "a=A.CD", "a=AB.D"}));
}

TEST(CrashStateVisits, AreOfDifferentStates) {
    std::multiset<std::pair<bool, std::string>> seen;
    test::for_each_crash_state(
        {{kA, "xy"}}, {Written{kA, 0, "AB"}, Flushed{kA}}, {},
        [&](const test::CrashState& state) { seen.emplace(state.finished, text_of(state.files)); });
    EXPECT_THAT(seen, ::testing::ElementsAre(std::pair(false, "a=AB"), std::pair(false, "a=xy"),
                                             std::pair(true, "a=AB")));
}

// What the files in memory record, in words.
std::string text_of(const FileOperation& operation) {
    struct Text {
        std::string operator()(const Created& one) { return "create " + to_utf8(one.name); }
        std::string operator()(const Written& one) {
            return "write " + to_utf8(one.name) + " " + std::to_string(one.offset) + " " +
                   one.bytes.text();
        }
        std::string operator()(const LengthSet& one) {
            return "length " + to_utf8(one.name) + " " + std::to_string(one.length);
        }
        std::string operator()(const Flushed& one) { return "flush " + to_utf8(one.name); }
        std::string operator()(const Renamed& one) {
            return "rename " + to_utf8(one.from) + " " + to_utf8(one.to);
        }
        std::string operator()(const Removed& one) { return "remove " + to_utf8(one.name); }
        std::string operator()(const FolderFlushed& /*one*/) { return "flush folder"; }
    };
    return std::visit(Text(), operation);
}

class RecordedOperations : public ::testing::Test {
protected:
    void SetUp() override {
        files_.put(kA, "old");
        files_.record_into(operations_);
    }
    [[nodiscard]] std::vector<std::string> recorded() const {
        std::vector<std::string> texts;
        for (const FileOperation& operation : operations_) {
            texts.push_back(text_of(operation));
        }
        return texts;
    }

    test::MemoryFiles files_;
    std::vector<FileOperation> operations_;
};

TEST_F(RecordedOperations, AreTheChangesInTheirOrder) {
    const auto old = files_.open(kA, OpenMode::Read);
    String name;
    const auto made = files_.create_beside(kA, name);
    made->write_at(0, Bytes("N"));
    EXPECT_EQ(made->copy_from(*old, 1, 1, 2), 2U);
    made->set_length(2);
    made->flush();
    made->close();
    old->close();
    files_.replace(name, kA);
    files_.flush_folder_of(kA);
    files_.open(kB, OpenMode::ReadWriteOrCreate)->close();
    files_.remove(kB);
    EXPECT_THAT(recorded(), ::testing::ElementsAre("create new1.tmp", "write new1.tmp 0 N",
                                                   "write new1.tmp 1 ld", "length new1.tmp 2",
                                                   "flush new1.tmp", "rename new1.tmp a",
                                                   "flush folder", "create b", "remove b"));
}

TEST_F(RecordedOperations, HaveWhatAFailingWriteHasWritten) {
    files_.fail({.call = test::FileCall::Write, .bytes_before = 2});
    EXPECT_THROW(files_.open(kA, OpenMode::ReadWrite)->write_at(1, Bytes("LDER")), Error);
    EXPECT_THAT(recorded(), ::testing::ElementsAre("write a 1 LD"));
}

TEST_F(RecordedOperations, HaveNothingThatFailed) {
    const auto file = files_.open(kA, OpenMode::ReadWrite);
    files_.fail({.from_then_on = true});
    EXPECT_THROW(file->set_length(1), Error);
    EXPECT_THROW(file->flush(), Error);
    EXPECT_THROW(files_.remove(kA), Error);
    EXPECT_THROW(files_.replace(kA, kB), Error);
    EXPECT_THROW(files_.flush_folder_of(kA), Error);
    EXPECT_THAT(recorded(), ::testing::IsEmpty());
}

}  // namespace
}  // namespace brindle
