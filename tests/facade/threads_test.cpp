// Objects on many threads: each belongs to one, and they share nothing but the disk.
#include <array>
#include <atomic>
#include <string>
#include <thread>
#include <utility>
#include <variant>
#include <vector>

#include <gtest/gtest.h>

#include <brindle/frame_walk.h>
#include <brindle/save_plan.h>
#include <brindle/text.h>

#include "facade/loaded_header.h"
#include "support/every_property.h"
#include "support/temporary_folder.h"
#include "util/environment.h"

namespace brindle {
namespace {

using test::audio;
using test::Bytes;
using test::Frame;
using test::Tag;

constexpr int kThreads = 8;
constexpr int kRounds = 20;

template <typename Work>
void on_all_threads(Work work) {
    std::atomic<int> ready = 0;
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (int number = 0; number < kThreads; ++number) {
        threads.emplace_back([&, number] {
            ++ready;
            while (ready < kThreads) {
                std::this_thread::yield();
            }
            work(number);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

// More ids and fields than are searched without an index, which is made when it is first needed.
Bytes song() {
    Tag tag(3);
    tag.text("TIT2", "Song").text("TPE1", "Singer").text("TCON", "(17)").field("Cue In", "250");
    for (int number = 10; number < 60; ++number) {
        tag.text("T0" + std::to_string(number), "x").field(std::to_string(number), "y");
    }
    return tag.padding(3'000) + audio() + test::Id3v1{.title = "Song"}.bytes();
}

Bytes changing_rates(int frames) {
    std::vector<int> rates;
    rates.reserve(static_cast<std::size_t>(frames));
    for (int number = 0; number < frames; ++number) {
        rates.push_back(number % 2 == 0 ? 128 : 160);
    }
    return test::variable_stream(Frame{}, rates);
}

TEST(Threads, EachReadsEditsAndSavesAFileOfItsOwn) {
    const test::TemporaryFolder folder;
    const Bytes original = song();
    std::array<std::string, kThreads> entries;
    std::array<String, kThreads> names;
    for (std::size_t number = 0; number < kThreads; ++number) {
        entries[number] = std::to_string(number) + ".mp3";
        names[number] = folder.put(entries[number], original);
    }
    const Variant long_text(std::in_place_type<String>, 600, u'x');
    std::array<String, kThreads> titles;
    on_all_threads([&](int number) {
        const auto place = static_cast<std::size_t>(number);
        for (int round = 0; round < kRounds; ++round) {
            cMPEGHeader header;
            header.FileName(names[place]);
            (void)test::read_every_property(header);
            (void)walk_frames(header);
            titles[place] = from_utf8(std::to_string(number) + " in " + std::to_string(round));
            header.Title(titles[place]);
            header.CustomFieldAdd(u"Agency", titles[place]);
            // Now and then more than fits, so that files are rebuilt, and stripped, too.
            header.CustomFieldAdd(from_utf8("Field " + std::to_string(round)), long_text);
            (void)plan_save(header);
            header.SaveAllInfo();
            if (round % 5 == 3) {
                (void)header.StripTags(v1TagOnly);
            }
        }
    });
    for (std::size_t number = 0; number < kThreads; ++number) {
        SCOPED_TRACE(number);
        cMPEGHeader header;
        header.FileName(names[number]);
        EXPECT_EQ(header.Title(), titles[number]);
        EXPECT_EQ(header.CustomFieldRetrieve(u"Agency"), Variant(titles[number]));
        EXPECT_EQ(header.CustomFieldRetrieve(u"Field 0"), long_text);
        EXPECT_EQ(header.Duration(), 3'128) << "50,040 bytes at 16 a millisecond: 3,127.5";
        EXPECT_NE(folder.content(entries[number]).text().find(audio().text()), std::string::npos);
    }
    EXPECT_EQ(folder.entries().size(), std::size_t{kThreads}) << "no new file is left behind";
}

TEST(Threads, AllReadTheSameFile) {
    const test::TemporaryFolder folder;
    const String name = folder.put("song.mp3", song());
    cMPEGHeader alone;
    alone.FileName(name);
    const std::size_t expected = test::read_every_property(alone);
    std::atomic<int> differ = 0;
    on_all_threads([&](int /*number*/) {
        for (int round = 0; round < kRounds; ++round) {
            cMPEGHeader header;
            header.FileName(name);
            differ += test::read_every_property(header) == expected ? 0 : 1;
            differ += header.Title() == u"Song" && header.FrameCount() == 54 ? 0 : 1;
        }
    });
    EXPECT_EQ(differ, 0);
}

// The machine's disk, and a clock of its own whose each look finds a second gone: Scanning comes as
// often as it can.
struct Hurried {
    test::FakeClock clock;
    Environment environment{system_environment().files, clock};
    cMPEGHeader header{environment};

    Hurried() { clock.step = 1.0; }
};

TEST(Threads, CancelEndsTheScanOfItsOwnObjectAlone) {
    const test::TemporaryFolder folder;
    const String name = folder.put("song.mp3", changing_rates(2'000));
    std::array<bool, kThreads> has_stream{};
    std::array<int, kThreads> scans{};
    on_all_threads([&](int number) {
        const auto place = static_cast<std::size_t>(number);
        Hurried hurried;
        hurried.header.Scanning = [&](const String&, std::int32_t, std::int32_t, bool& cancel) {
            ++scans[place];
            cancel = number % 2 == 1;
        };
        hurried.header.FileName(name);
        has_stream[place] = hurried.header.VBR() && hurried.header.Frequency() == 44'100;
    });
    for (int number = 0; number < kThreads; ++number) {
        const auto place = static_cast<std::size_t>(number);
        SCOPED_TRACE(number);
        EXPECT_EQ(has_stream[place], number % 2 == 0);
        EXPECT_EQ(scans[place] == 1, number % 2 == 1);
    }
}

// A button of the host, pressed on another thread or inside the event of another header.
TEST(Threads, CancelOfOneScanComesFromTheHandlerOfAnother) {
    const test::TemporaryFolder folder;
    const String name = folder.put("song.mp3", changing_rates(2'000));
    std::atomic<bool> is_cancelled = false;
    std::atomic<bool> is_waiting = false;
    bool waiting_has_stream = true;
    bool cancelling_has_stream = false;
    std::thread waiting([&] {
        Hurried hurried;
        hurried.header.Scanning = [&](const String&, std::int32_t, std::int32_t, bool& cancel) {
            is_waiting = true;
            while (!is_cancelled) {
                std::this_thread::yield();
            }
            cancel = true;
        };
        hurried.header.FileName(name);
        waiting_has_stream = hurried.header.VBR();
    });
    std::thread cancelling([&] {
        while (!is_waiting) {
            std::this_thread::yield();
        }
        Hurried hurried;
        hurried.header.Scanning = [&](const String&, std::int32_t, std::int32_t, bool&) {
            is_cancelled = true;
        };
        hurried.header.FileName(name);
        cancelling_has_stream = hurried.header.VBR();
    });
    waiting.join();
    cancelling.join();
    EXPECT_FALSE(waiting_has_stream);
    EXPECT_TRUE(cancelling_has_stream);
}

TEST(Threads, AnotherObjectWorksInsideAHandlerAndItsCancelStaysItsOwn) {
    const test::TemporaryFolder folder;
    const String outer_name = folder.put("outer.mp3", changing_rates(2'000));
    const String inner_name = folder.put("inner.mp3", song());
    const String cancelled_name = folder.put("cancelled.mp3", changing_rates(2'000));
    Hurried outer;
    int inner_scans = 0;
    outer.header.Scanning = [&](const String&, std::int32_t, std::int32_t, bool& outer_cancel) {
        Hurried inner;
        inner.header.FileName(inner_name);
        EXPECT_EQ(inner.header.Artist(), u"Singer");
        inner.header.Title(u"Inside");
        inner.header.SaveAllInfo();
        inner.header.Scanning = [&](const String&, std::int32_t, std::int32_t, bool& cancel) {
            ++inner_scans;
            cancel = true;
        };
        inner.header.FileName(cancelled_name);
        EXPECT_EQ(inner.header.Frequency(), 0) << "cancelled";
        EXPECT_FALSE(outer_cancel);
    };
    outer.header.FileName(outer_name);
    EXPECT_GE(inner_scans, 1);
    EXPECT_TRUE(outer.header.VBR());
    EXPECT_EQ(outer.header.Frequency(), 44'100);

    // And the other way round: what the inner one finds ends the outer one.
    outer.header.Scanning = [&](const String&, std::int32_t, std::int32_t, bool& outer_cancel) {
        Hurried inner;
        inner.header.Scanning = [&](const String&, std::int32_t, std::int32_t, bool&) {
            outer_cancel = true;
        };
        inner.header.FileName(cancelled_name);
        EXPECT_TRUE(inner.header.VBR());
    };
    outer.header.FileName(outer_name);
    EXPECT_FALSE(outer.header.VBR());
    EXPECT_EQ(outer.header.Frequency(), 0);
}

}  // namespace
}  // namespace brindle
