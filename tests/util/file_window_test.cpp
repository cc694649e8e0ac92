#include "util/file_window.h"

#include <algorithm>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <brindle/error.h>

#include "support/raised_error.h"
#include "support/read_only_file.h"

namespace brindle {
namespace {

using test::error_number;
using Bytes = std::vector<std::uint8_t>;

struct Read {
    std::int64_t offset;
    std::size_t count;

    friend bool operator==(const Read&, const Read&) = default;
};

void PrintTo(const Read& read, std::ostream* stream) {
    *stream << "{" << read.offset << ", " << read.count << "}";
}

// A file in memory that remembers what was read of it.
class ReadLog final : public test::ReadOnlyFile {
public:
    explicit ReadLog(std::size_t count) : content(count), claimed_length(count) {
        // No two places of a file look alike for long: 251 is prime.
        for (std::size_t i = 0; i < count; ++i) {
            content[i] = static_cast<std::uint8_t>(i % 251 + i / 65'536);
        }
    }

    std::int64_t length() override {
        ++lengths;
        return static_cast<std::int64_t>(claimed_length);
    }
    void expect_reads(ReadOrder order) override { orders.push_back(order); }
    std::size_t read_at(std::int64_t offset, std::span<std::uint8_t> into) override {
        reads.push_back({offset, into.size()});
        if (fails) {
            throw Error(RuntimeError::DeviceInputOutput);
        }
        const auto from = std::min(static_cast<std::size_t>(offset), content.size());
        const std::size_t count = std::min(into.size(), content.size() - from);
        std::copy_n(content.begin() + static_cast<std::ptrdiff_t>(from), count, into.begin());
        return count;
    }

    [[nodiscard]] Bytes slice(std::int64_t offset, std::size_t count) const {
        const auto from = static_cast<std::size_t>(
            std::clamp<std::int64_t>(offset, 0, static_cast<std::int64_t>(content.size())));
        if (offset < 0) {
            return {};
        }
        const std::size_t length = std::min(count, content.size() - from);
        const auto begin = content.begin() + static_cast<std::ptrdiff_t>(from);
        return {begin, begin + static_cast<std::ptrdiff_t>(length)};
    }

    Bytes content;
    std::size_t claimed_length;
    bool fails = false;
    int lengths = 0;
    std::vector<ReadOrder> orders;
    std::vector<Read> reads;
};

Bytes bytes_of(std::span<const std::uint8_t> view) {
    return {view.begin(), view.end()};
}

using Reads = std::vector<Read>;

TEST(FileWindow, LengthIsReadOnce) {
    ReadLog file(100'000);
    FileWindow window(file);
    (void)window.view(0, 10);
    (void)window.view(50'000, 10);
    EXPECT_EQ(window.length(), 100'000);
    EXPECT_EQ(file.lengths, 1);
}

TEST(FileWindow, NothingIsReadUntilSomethingIsViewed) {
    ReadLog file(100'000);
    FileWindow window(file);
    window.expect_until(100'000);
    EXPECT_EQ(file.reads, Reads{});
    EXPECT_EQ(window.refills(), 0U);
}

TEST(FileWindow, HeadIsReadInOneSmallBlock) {
    ReadLog file(100'000);
    FileWindow window(file);
    EXPECT_EQ(bytes_of(window.view(0, 10)), file.slice(0, 10));
    EXPECT_EQ(bytes_of(window.view(8'000, 192)), file.slice(8'000, 192));
    EXPECT_EQ(bytes_of(window.view(5, 0)), Bytes());
    EXPECT_EQ(file.reads, (Reads{{0, 8'192}}));
    EXPECT_EQ(window.refills(), 1U);
}

TEST(FileWindow, SmallFileIsReadOnce) {
    ReadLog file(5'000);
    FileWindow window(file);
    EXPECT_EQ(bytes_of(window.view(0, 10)), file.slice(0, 10));
    EXPECT_EQ(bytes_of(window.view(4'990, 100)), file.slice(4'990, 10));
    EXPECT_EQ(bytes_of(window.view(4'990, 100)), file.slice(4'990, 10));
    EXPECT_EQ(file.reads, (Reads{{0, 5'000}}));
}

TEST(FileWindow, ExpectationSaysHowFarIsRead) {
    ReadLog file(1'000'000);
    FileWindow small(file);
    small.expect_until(20'000);
    (void)small.view(100, 10);
    FileWindow large(file);
    large.expect_until(500'000);
    (void)large.view(100, 10);
    FileWindow past(file);
    past.expect_until(50);
    (void)past.view(100, 10);
    EXPECT_EQ(file.reads, (Reads{{100, 19'900}, {0, 98'304}, {100, 8'192}}));
}

TEST(FileWindow, MoreThanABlockIsReadWhenItIsWanted) {
    ReadLog file(1'000'000);
    FileWindow window(file);
    EXPECT_EQ(bytes_of(window.view(7, 500'000)), file.slice(7, 500'000));
    EXPECT_EQ(file.reads, (Reads{{7, 500'000}}));
}

TEST(FileWindow, ReadsOnAfterTheBytesItHolds) {
    ReadLog file(100'000);
    FileWindow window(file);
    (void)window.view(0, 10);
    EXPECT_EQ(bytes_of(window.view(8'190, 4)), file.slice(8'190, 4));
    EXPECT_EQ(bytes_of(window.view(16'384, 4)), file.slice(16'384, 4));
    EXPECT_EQ(file.reads, (Reads{{0, 8'192}, {8'192, 8'192}, {16'384, 8'192}}));
}

TEST(FileWindow, WalkOverFramesReadsWholeBlocks) {
    ReadLog file(1'048'576);
    FileWindow window(file);
    window.expect_until(1'048'576);
    for (std::int64_t frame = 0; frame + 417 <= 1'048'576; frame += 417) {
        ASSERT_EQ(bytes_of(window.view(frame, 4)), file.slice(frame, 4));
    }
    // Ten blocks of 98,304 bytes and the rest.
    EXPECT_EQ(window.refills(), 11U);
    EXPECT_EQ(window.refills(), file.reads.size());
}

TEST(FileWindow, LongWayIsReadInWholePagesWithoutAGap) {
    ReadLog file(1'000'000);
    FileWindow window(file);
    window.expect_until(1'000'000);
    (void)window.view(100, 4);
    (void)window.view(98'500, 4);
    (void)window.view(500'001, 4);
    EXPECT_EQ(file.reads, (Reads{{0, 98'304}, {98'304, 98'304}, {499'712, 98'304}}));
}

TEST(FileWindow, SlidingByOneByteStillReadsBlocks) {
    ReadLog file(300'000);
    FileWindow window(file);
    window.expect_until(300'000);
    for (std::int64_t offset = 0; offset < 200'000; ++offset) {
        ASSERT_EQ(window.view(offset, 60'000).size(), 60'000U);
    }
    // The last view ends at 259,999, and three blocks at 294,912.
    EXPECT_EQ(window.refills(), 3U);
}

TEST(FileWindow, LeapReadsNothingInBetween) {
    ReadLog file(1'000'000);
    FileWindow window(file);
    (void)window.view(0, 10);
    EXPECT_EQ(bytes_of(window.view(999'872, 128)), file.slice(999'872, 128));
    EXPECT_EQ(file.reads, (Reads{{0, 8'192}, {999'872, 128}}));
}

TEST(FileWindow, CopyThatReadsOnMovesTheWindowAfterIt) {
    ReadLog file(100'000);
    FileWindow window(file);
    (void)window.view(0, 10);
    window.expect_until(80'000);
    Bytes copy(60'000);
    EXPECT_EQ(window.copy_and_read_on(100, copy), 60'000U);
    EXPECT_EQ(copy, file.slice(100, 60'000));
    EXPECT_EQ(window.refills(), 2U);
    EXPECT_EQ(bytes_of(window.view(60'100, 19'900)), file.slice(60'100, 19'900));
    EXPECT_EQ(file.reads, (Reads{{0, 8'192}, {8'192, 51'908}, {60'100, 19'900}}));
    EXPECT_EQ(window.bytes_read(), 80'000);
}

TEST(FileWindow, CopyReadsOnOnlyWhereSomethingIsExpectedAndHeld) {
    ReadLog file(100'000);
    FileWindow window(file);
    Bytes copy(20'000);
    window.expect_until(40'000);
    EXPECT_EQ(window.copy_and_read_on(50, copy), 20'000U) << "nothing was held";
    EXPECT_EQ(copy, file.slice(50, 20'000));
    window.expect_until(20'000);
    (void)window.view(0, 10);
    EXPECT_EQ(window.copy_and_read_on(50, copy), 20'000U) << "nothing more is expected";
    EXPECT_EQ(copy, file.slice(50, 20'000));
    copy.resize(1'000);
    window.expect_until(90'000);
    EXPECT_EQ(window.copy_and_read_on(10'000, copy), 1'000U) << "all of it was held";
    EXPECT_EQ(copy, file.slice(10'000, 1'000));
    EXPECT_EQ(file.reads, (Reads{{50, 20'000}, {0, 20'000}, {20'000, 50}}));
}

TEST(FileWindow, CopyThatReadsOnEndsWithAFileThatWasCut) {
    for (const std::size_t length : {30'000U, 65'000U}) {
        ReadLog file(length);
        file.claimed_length = 100'000;
        FileWindow window(file);
        (void)window.view(0, 10);
        window.expect_until(80'000);
        Bytes copy(60'000);
        const std::size_t copied = std::min<std::size_t>(length - 100, 60'000);
        EXPECT_EQ(window.copy_and_read_on(100, copy), copied);
        copy.resize(copied);
        EXPECT_EQ(copy, file.slice(100, copied));
        EXPECT_EQ(bytes_of(window.view(60'100, 19'900)), file.slice(60'100, 19'900));
        EXPECT_EQ(bytes_of(window.view(99'000, 10)), Bytes());
    }
}

TEST(FileWindow, CopyReadsOnNoFartherThanTheTailThatIsKnown) {
    ReadLog file(20'000);
    FileWindow window(file);
    Bytes tail(128);
    window.copy(19'872, tail);
    (void)window.view(0, 10);
    window.expect_until(20'000);
    Bytes copy(10'000);
    EXPECT_EQ(window.copy_and_read_on(0, copy), 10'000U);
    EXPECT_EQ(bytes_of(window.view(10'000, 10'000)), file.slice(10'000, 10'000));
    EXPECT_EQ(file.reads[2], (Read{8'192, 1'808}));
    EXPECT_EQ(file.reads[3], (Read{10'000, 9'872}));
    EXPECT_EQ(file.reads.size(), 4U);
}

TEST(FileWindow, GoingBackReadsAgain) {
    ReadLog file(100'000);
    FileWindow window(file);
    (void)window.view(50'000, 10);
    EXPECT_EQ(bytes_of(window.view(10, 10)), file.slice(10, 10));
    EXPECT_EQ(file.reads, (Reads{{50'000, 8'192}, {10, 8'192}}));
}

TEST(FileWindow, WhatThereIsRoomForStays) {
    ReadLog file(300'000);
    FileWindow window(file);
    (void)window.view(200'000, 10);
    (void)window.view(207'000, 4'000);
    file.reads.clear();
    EXPECT_EQ(bytes_of(window.view(200'000, 10)), file.slice(200'000, 10));
    EXPECT_EQ(file.reads, Reads{});
}

TEST(FileWindow, KeptBytesCostNothingToGoBackTo) {
    ReadLog file(1'000'000);
    FileWindow window(file);
    window.expect_until(1'000'000);
    window.keep_from(100);
    for (std::int64_t offset = 0; offset < 290'000; offset += 2'881) {
        ASSERT_EQ(bytes_of(window.view(offset, 4)), file.slice(offset, 4));
    }
    const std::uint32_t refills = window.refills();
    EXPECT_EQ(bytes_of(window.view(100, 4)), file.slice(100, 4));
    EXPECT_EQ(bytes_of(window.view(150'000, 4)), file.slice(150'000, 4));
    EXPECT_EQ(window.refills(), refills);
    EXPECT_EQ(refills, 3U);  // of 98,304 bytes: nothing was read twice
}

TEST(FileWindow, WhatIsNotKeptIsLetGoWhenThereIsNoRoomForIt) {
    ReadLog file(1'000'000);
    FileWindow window(file);
    window.expect_until(1'000'000);
    window.keep_from(0);
    (void)window.view(0, 10);
    window.keep_from(90'000);
    (void)window.view(98'300, 10);
    const std::uint32_t refills = window.refills();
    EXPECT_EQ(bytes_of(window.view(90'000, 10)), file.slice(90'000, 10));
    EXPECT_EQ(window.refills(), refills);
    EXPECT_EQ(bytes_of(window.view(89'999, 10)), file.slice(89'999, 10));
    EXPECT_EQ(window.refills(), refills + 1);
}

TEST(FileWindow, StretchThatIsKnownToBeShortIsReadAtOnce) {
    ReadLog file(1'000'000);
    FileWindow window(file);
    window.expect_at_once(100'000);
    EXPECT_EQ(window.view_block(0, 4).size(), 100'000U);
    EXPECT_EQ(file.reads, (std::vector<Read>{{0, 100'000}}));
}

TEST(FileWindow, AtMostTheMaximumIsKept) {
    ReadLog file(1'000'000);
    FileWindow window(file);
    window.expect_until(1'000'000);
    window.keep_from(0);
    for (std::int64_t offset = 0; offset < 700'000; offset += 1'000) {
        ASSERT_EQ(bytes_of(window.view(offset, 4)), file.slice(offset, 4));
        ASSERT_LE(window.view_block(offset, 4).size(), FileWindow::kMaxHeld);
    }
    const std::uint32_t refills = window.refills();
    EXPECT_EQ(bytes_of(window.view(0, 4)), file.slice(0, 4));
    EXPECT_EQ(window.refills(), refills + 1);
}

TEST(FileWindow, LeapLetsGoOfWhatWasKept) {
    ReadLog file(1'000'000);
    FileWindow window(file);
    window.keep_from(0);
    (void)window.view(0, 10);
    (void)window.view(8'192 + 98'305, 10);
    EXPECT_EQ(file.reads, (Reads{{0, 8'192}, {106'497, 8'192}}));
}

TEST(FileWindow, OutsideTheFileIsNothing) {
    ReadLog file(10'000);
    FileWindow window(file);
    EXPECT_TRUE(window.view(10'000, 4).empty());
    EXPECT_TRUE(window.view(20'000, 4).empty());
    EXPECT_TRUE(window.view(-1, 4).empty());
    EXPECT_TRUE(window.view_block(10'000, 4).empty());
    Bytes room(4);
    EXPECT_EQ(window.copy(10'000, room), 0U);
    EXPECT_EQ(window.copy(-1, room), 0U);
    EXPECT_EQ(file.reads, Reads{});
}

TEST(FileWindow, EmptyFileIsNothing) {
    ReadLog file(0);
    FileWindow window(file);
    EXPECT_TRUE(window.view(0, 10).empty());
    EXPECT_TRUE(window.view_block(0, 10).empty());
    EXPECT_EQ(file.reads, Reads{});
}

TEST(FileWindow, ViewBlockGivesAllThatIsHeld) {
    ReadLog file(100'000);
    FileWindow window(file);
    EXPECT_EQ(bytes_of(window.view_block(0, 4)), file.slice(0, 8'192));
    EXPECT_EQ(bytes_of(window.view_block(8'000, 192)), file.slice(8'000, 192));
    EXPECT_EQ(bytes_of(window.view_block(8'000, 193)), file.slice(8'000, 8'384));
    EXPECT_EQ(bytes_of(window.view_block(99'990, 100)), file.slice(99'990, 10));
}

TEST(FileWindow, CopyLeavesTheWindowWhereItIs) {
    ReadLog file(100'000);
    FileWindow window(file);
    (void)window.view(10'000, 10);
    file.reads.clear();

    Bytes inside(500);
    EXPECT_EQ(window.copy(11'000, inside), 500U);
    EXPECT_EQ(inside, file.slice(11'000, 500));
    EXPECT_EQ(file.reads, Reads{});

    Bytes over_both_ends(20'000);
    EXPECT_EQ(window.copy(5'000, over_both_ends), 20'000U);
    EXPECT_EQ(over_both_ends, file.slice(5'000, 20'000));
    EXPECT_EQ(file.reads, (Reads{{5'000, 5'000}, {18'192, 6'808}}));

    Bytes at_the_end(100);
    EXPECT_EQ(window.copy(99'950, at_the_end), 50U);
    EXPECT_EQ(window.copy(15'000, std::span<std::uint8_t>()), 0U);

    EXPECT_EQ(bytes_of(window.view(10'000, 10)), file.slice(10'000, 10));
    EXPECT_EQ(window.refills(), 1U);
}

TEST(FileWindow, RecordThatWasCopiedFirstIsNotReadAgain) {
    ReadLog file(20'000);
    FileWindow window(file);
    Bytes record(128);
    EXPECT_EQ(window.copy(19'872, record), 128U);
    EXPECT_EQ(window.bytes_read(), 0) << "the tail is not counted";
    window.expect_until(20'000);
    EXPECT_EQ(bytes_of(window.view(0, 20'000)), file.slice(0, 20'000));
    EXPECT_EQ(file.reads, (Reads{{19'872, 128}, {0, 19'872}}));
    EXPECT_EQ(window.bytes_read(), 19'872);
    // Without a window that holds it, a part of it comes from memory as well.
    FileWindow other(file);
    EXPECT_EQ(other.copy(19'872, record), 128U);
    file.reads.clear();
    Bytes part(50);
    EXPECT_EQ(other.copy(19'900, part), 50U);
    EXPECT_EQ(part, file.slice(19'900, 50));
    EXPECT_EQ(file.reads, Reads{});
}

TEST(FileWindow, TellsWhatItHasPassed) {
    ReadLog file(200'000);
    FileWindow window(file);
    EXPECT_FALSE(window.has_passed(0));
    (void)window.view(100'000, 10);
    EXPECT_TRUE(window.has_passed(99'999));
    EXPECT_FALSE(window.has_passed(100'000));
    EXPECT_FALSE(window.has_passed(150'000)) << "a view of it reads on";
}

TEST(FileWindow, TruncatedFileGivesTheRemainingBytes) {
    ReadLog file(10'000);
    file.claimed_length = 100'000;
    FileWindow window(file);
    EXPECT_EQ(bytes_of(window.view(5'000, 20'000)), file.slice(5'000, 5'000));
    EXPECT_TRUE(window.view(10'000, 4).empty());
    EXPECT_TRUE(window.view(50'000, 4).empty());
    Bytes room(2'000);
    EXPECT_EQ(window.copy(9'000, room), 1'000U);
    EXPECT_EQ(file.reads, (Reads{{5'000, 20'000}}));  // it does not ask again
    EXPECT_EQ(window.length(), 100'000);
}

TEST(FileWindow, FileThatWasCutBeforeTheViewGivesNothing) {
    ReadLog file(10'000);
    file.claimed_length = 100'000;
    FileWindow window(file);
    EXPECT_TRUE(window.view(50'000, 4).empty());
    Bytes room(4);
    EXPECT_EQ(window.copy(60'000, room), 0U);
}

TEST(FileWindow, FailedReadLeavesItUsable) {
    ReadLog file(100'000);
    FileWindow window(file);
    window.keep_from(0);
    (void)window.view(0, 10);
    file.fails = true;
    EXPECT_EQ(error_number([&] { (void)window.view(8'190, 10); }), 57);
    EXPECT_EQ(bytes_of(window.view(8'000, 192)), file.slice(8'000, 192));
    Bytes room(10);
    EXPECT_EQ(error_number([&] { (void)window.copy(50'000, room); }), 57);
    file.fails = false;
    EXPECT_EQ(bytes_of(window.view(8'190, 10)), file.slice(8'190, 10));
    EXPECT_EQ(bytes_of(window.view(0, 10)), file.slice(0, 10));
}

RC_GTEST_PROP(FileWindow, AlwaysShowsTheBytesOfTheFile, ()) {
    const auto length = *rc::gen::element<std::size_t>(0, 1, 100, 8'192, 70'000, 600'000);
    ReadLog file(length);
    FileWindow window(file);
    const auto end = static_cast<std::int64_t>(length);
    const auto steps = *rc::gen::inRange(0, 60);
    std::int64_t last = 0;
    for (int step = 0; step < steps; ++step) {
        // Mostly near the last place, as readers go, sometimes anywhere.
        const std::int64_t offset = *rc::gen::weightedOneOf<std::int64_t>(
            {{6, rc::gen::map(rc::gen::inRange<std::int64_t>(-500, 9'000),
                              [last](std::int64_t by) { return last + by; })},
             {1, rc::gen::inRange<std::int64_t>(-10, end + 10)}});
        const auto wanted = *rc::gen::element<std::size_t>(0, 1, 4, 128, 2'881, 8'192, 65'536);
        switch (*rc::gen::inRange(0, 6)) {
            case 0:
                window.keep_from(offset);
                break;
            case 1:
                window.expect_until(offset + 100'000);
                break;
            case 2: {
                const std::uint32_t refills = window.refills();
                Bytes room(wanted);
                room.resize(window.copy(offset, room));
                RC_ASSERT(room == file.slice(offset, wanted));
                RC_ASSERT(window.refills() == refills);
                break;
            }
            case 3: {
                const Bytes block = bytes_of(window.view_block(offset, wanted));
                RC_ASSERT(block == file.slice(offset, block.size()));
                RC_ASSERT(block.size() >= file.slice(offset, wanted).size());
                RC_ASSERT(block.size() <= FileWindow::kMaxHeld);
                break;
            }
            default:
                RC_ASSERT(bytes_of(window.view(offset, wanted)) == file.slice(offset, wanted));
                last = std::clamp<std::int64_t>(offset, 0, end);
                break;
        }
    }
}

// --- how the system reads ahead

TEST(FileWindow, ExpectsScatteredReadsAndReadsOneAfterTheOtherInALongRange) {
    constexpr auto kLong = static_cast<std::int64_t>(FileWindow::kLongRange);
    ReadLog file(3 * FileWindow::kLongRange);
    FileWindow window(file);
    const std::vector<ReadOrder> scattered{ReadOrder::Scattered};
    EXPECT_EQ(file.orders, scattered);
    window.expect_until(kLong);
    EXPECT_EQ(file.orders, scattered);
    window.expect_until(kLong + 1);
    EXPECT_EQ(file.orders, (std::vector{ReadOrder::Scattered, ReadOrder::Sequential}));
}

TEST(FileWindow, RangeEndsWithTheFile) {
    ReadLog file(FileWindow::kLongRange);
    FileWindow window(file);
    window.expect_until(std::int64_t{1} << 40);
    EXPECT_EQ(file.orders, std::vector{ReadOrder::Scattered});
}

TEST(FileWindow, RangeBeginsAfterWhatIsHeld) {
    ReadLog file(FileWindow::kLongRange + 1);
    FileWindow window(file);
    static_cast<void>(window.view(0, 1));
    window.expect_until(window.length());
    EXPECT_EQ(file.orders, std::vector{ReadOrder::Scattered});
}

}  // namespace
}  // namespace brindle
