// Events of a long walk, and how a host can cancel it.

#include <algorithm>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <brindle/error.h>

#include "mpeg/analysis.h"
#include "support/frames.h"

namespace brindle::test {
namespace {

class ListeningHost : public Host {
public:
    struct Event {
        String name;
        std::int32_t position;
        std::int32_t length;
    };
    std::vector<Event> events;
    int yields = 0;
    std::vector<std::string> order;   // "yield" and "event" as they came
    std::size_t cancel_at_event = 0;  // counted from 1; 0 is never
    bool fails = false;

    void RaiseScanningEvent(const String& FileName, std::int32_t FilePos, std::int32_t FileLength,
                            bool& Cancel) override {
        EXPECT_FALSE(Cancel);
        events.push_back({FileName, FilePos, FileLength});
        order.emplace_back("event");
        Cancel = events.size() == cancel_at_event;
        if (fails) {
            throw Error(RuntimeError::TypeMismatch);
        }
    }
    void yield() override {
        ++yields;
        order.emplace_back("yield");
    }
    void show_message(const String&) override { FAIL(); }
};

// About a megabyte: 2000 frames of 417 and 626 bytes in turn.
Bytes long_variable_stream() {
    std::vector<int> rates;
    for (int pair = 0; pair < 1000; ++pair) {
        rates.push_back(128);
        rates.push_back(192);
    }
    return variable_stream(Frame{}, rates);
}
constexpr std::int32_t kLength = 1'043'000;

// The same length, but no chain of frames is accepted: 8 and 16 kbit/s.
Bytes long_slow_stream() {
    const Frame slow{.version = 2, .layer = 3, .kbps = 8, .frequency = 24000};
    Bytes bytes;
    for (int pair = 0; pair < 14'000; ++pair) {
        bytes += slow.bytes() + slow.with_kbps(16).bytes();
    }
    return bytes;
}

TEST(ScanProgress, IsReportedEveryHalfSecondOfTheWalk) {
    Analysis file(long_variable_stream());
    ListeningHost host;
    file.analyser.Owner = &host;
    file.world.clock.step = 0.2;
    file.run();
    EXPECT_TRUE(file.found());
    ASSERT_GE(host.events.size(), 3U);
    std::int32_t before = 0;
    for (const ListeningHost::Event& event : host.events) {
        EXPECT_EQ(event.name, kName);
        EXPECT_EQ(event.length, kLength);
        EXPECT_GT(event.position, before);
        EXPECT_LE(event.position, kLength);
        before = event.position;
    }
    // Three looks of 0.2 seconds each go by before one is above half a second.
    EXPECT_LE(host.events.size(), file.world.clock.looks / 3);
    EXPECT_GE(host.yields, static_cast<int>(host.events.size()));
}

TEST(ScanProgress, IsNotReportedByAWalkThatTakesNoTime) {
    Analysis file(long_variable_stream());
    ListeningHost host;
    file.analyser.Owner = &host;
    file.run();
    EXPECT_TRUE(file.found());
    EXPECT_TRUE(host.events.empty());
    EXPECT_EQ(host.yields, 0);
}

TEST(ScanProgress, ExactlyHalfASecondIsNotYetDue) {
    Analysis file(variable_stream(Frame{}, std::vector<int>{128, 192, 128, 192, 128, 192, 128, 192,
                                                            128, 192, 128, 192, 128, 192}));
    ListeningHost host;
    file.analyser.Owner = &host;
    file.world.clock.step = 0.5;
    file.run();
    EXPECT_TRUE(file.analyser.VBR());
    EXPECT_TRUE(host.events.empty());
}

TEST(ScanProgress, ClockIsReadABlockNotAFrame) {
    Analysis file(long_variable_stream());
    ListeningHost host;
    file.analyser.Owner = &host;
    file.run();
    EXPECT_LE(file.world.clock.looks, 10 + 2 * file.world.files.calls(FileCall::Read));
}

TEST(ScanProgress, ConstantStreamRaisesNoEventAtAll) {
    Analysis file(stream(Frame{}, 2500));
    ListeningHost host;
    file.analyser.Owner = &host;
    file.world.clock.step = 10;
    file.run();
    EXPECT_TRUE(file.found());
    EXPECT_TRUE(host.events.empty());
}

TEST(ScanProgress, SlowSearchYieldsWithoutAnEvent) {
    Analysis file(zeros(12'000) + stream(Frame{}, 120));
    ListeningHost host;
    file.analyser.Owner = &host;
    file.world.clock.step = 0.5;
    file.run();
    EXPECT_TRUE(file.found());
    EXPECT_GT(host.yields, 0);
    EXPECT_TRUE(host.events.empty());
}

// When the host gets its turn, in seconds after the start, where each read of the file takes so
// long.
std::vector<double> yield_times(const Bytes& content, double seconds_of_a_read) {
    class Timed : public ListeningHost {
    public:
        explicit Timed(FakeClock& clock) : clock_(clock) {}
        void yield() override { times.push_back(clock_.now - 1000.0); }
        std::vector<double> times;

    private:
        FakeClock& clock_;
    };
    Analysis file(content);
    Timed host(file.world.clock);
    file.analyser.Owner = &host;
    file.world.files.after_each_read([&] { file.world.clock.now += seconds_of_a_read; });
    file.run();
    return host.times;
}

// Reads of 8 KiB: a search over 24,000 bytes takes three. The position's clock is due from 0.4
// seconds on, that of the failures, which is asked first after a read, from 0.5.
TEST(ScanProgress, SearchYieldsAfterFourAndFiveTenthsOfASecond) {
    const Bytes content = zeros(24'000);
    using Times = std::vector<double>;
    EXPECT_EQ(yield_times(content, 0.125), Times{});
    EXPECT_EQ(yield_times(content, 0.375), (Times{0.75, 0.75}));
    EXPECT_EQ(yield_times(content, 0.4375), (Times{0.4375, 0.875, 0.875, 1.3125}));
    EXPECT_EQ(yield_times(content, 0.5), (Times{0.5, 0.5, 1.0, 1.0, 1.5, 1.5}));
}

// Of a stream the head is read first, then all frames that are compared: the clock of the chain is
// due after more than a second.
TEST(ScanProgress, ChainYieldsAfterMoreThanASecond) {
    const Bytes content = stream(Frame{}, 120);
    EXPECT_EQ(yield_times(content, 0.5), std::vector<double>{});
    EXPECT_EQ(yield_times(content, 0.53125), std::vector<double>{1.0625});
}

TEST(ScanProgress, WalkReportsAfterMoreThanHalfASecond) {
    const auto events_at = [](double seconds_of_a_read) {
        Analysis file(long_variable_stream());
        ListeningHost host;
        file.analyser.Owner = &host;
        file.world.files.after_each_read([&] { file.world.clock.now += seconds_of_a_read; });
        file.run();
        return host.events.size();
    };
    // Eleven blocks of 96 KiB; of those that take exactly half a second every other one
    // is reported.
    const std::size_t blocks = events_at(0.5625);
    EXPECT_GE(blocks, 10U);
    EXPECT_LE(blocks, 12U);
    EXPECT_LE(events_at(0.5), blocks / 2 + 1);
    EXPECT_GE(events_at(0.5), blocks / 2 - 1);
}

TEST(ScanProgress, HostGetsItsTurnBeforeEachEvent) {
    Analysis file(long_variable_stream());
    ListeningHost host;
    file.analyser.Owner = &host;
    file.world.files.after_each_read([&] { file.world.clock.now += 0.5625; });
    file.run();
    ASSERT_GT(host.events.size(), 3U);
    const auto first_event = std::find(host.order.begin(), host.order.end(), "event");
    for (auto event = first_event; event < host.order.end(); event += 2) {
        EXPECT_EQ(*event, "event");
        EXPECT_EQ(*(event - 1), "yield");
    }
}

TEST(ScanProgress, RunsForwardInTheSecondPassToo) {
    const Bytes audio = long_slow_stream();
    Analysis file(audio);
    ListeningHost host;
    file.analyser.Owner = &host;
    file.world.clock.step = 0.3;
    file.run();
    EXPECT_TRUE(file.found());
    EXPECT_FALSE(file.analyser.VBR());
    int turns_back = 0;
    for (std::size_t index = 1; index < host.events.size(); ++index) {
        turns_back += host.events[index].position <= host.events[index - 1].position ? 1 : 0;
        EXPECT_GE(host.events[index].position, 0);
        EXPECT_LE(host.events[index].position, static_cast<std::int32_t>(audio.size()));
    }
    EXPECT_EQ(turns_back, 1);
}

void expect_cancelled(const Analysis& file) {
    EXPECT_FALSE(file.found());
    EXPECT_EQ(file.analyser.DurationmS(), -1);
    EXPECT_EQ(file.analyser.BitRate(), 0);
    EXPECT_EQ(file.analyser.ChannelMode(), -1);
    EXPECT_EQ(file.analyser.FrameCounter(), 0);
    EXPECT_FALSE(file.analyser.accepted_position());
    EXPECT_FALSE(file.analyser.read_fault());
}

TEST(ScanProgress, CancelEndsTheAnalysisAtOnce) {
    Analysis file(long_variable_stream());
    ListeningHost host;
    host.cancel_at_event = 2;
    file.analyser.Owner = &host;
    file.world.clock.step = 1;
    file.run();
    expect_cancelled(file);
    EXPECT_EQ(host.events.size(), 2U);
    EXPECT_LT(file.world.files.bytes_read(), std::uint64_t{kLength} / 2);
}

TEST(ScanProgress, CancelEndsTheSecondPassAtOnce) {
    Analysis probe(long_slow_stream());
    ListeningHost patient;
    probe.analyser.Owner = &patient;
    probe.world.clock.step = 1;
    probe.run();
    ASSERT_TRUE(probe.found());

    Analysis file(long_slow_stream());
    ListeningHost host;
    host.cancel_at_event = patient.events.size() - 1;
    file.analyser.Owner = &host;
    file.world.clock.step = 1;
    file.run();
    expect_cancelled(file);
    EXPECT_EQ(host.events.size(), host.cancel_at_event);
}

TEST(ScanProgress, NextFileAfterACancelledOneIsAnalysed) {
    Analysis file(long_variable_stream());
    ListeningHost host;
    host.cancel_at_event = 1;
    file.analyser.Owner = &host;
    file.world.clock.step = 1;
    file.run();
    ASSERT_FALSE(file.found());
    file.run();
    EXPECT_TRUE(file.found());
    EXPECT_EQ(file.analyser.FrameCounter(), 2000);
}

TEST(ScanProgress, HostThatFailsIsNoFaultOfTheFile) {
    Analysis file(long_variable_stream());
    ListeningHost host;
    host.fails = true;
    file.analyser.Owner = &host;
    file.world.clock.step = 1;
    file.run();
    EXPECT_TRUE(file.found());
    EXPECT_EQ(file.analyser.FrameCounter(), 2000);
    EXPECT_FALSE(file.analyser.read_fault());
}

TEST(ScanProgress, WithoutAHostALongWalkRunsToItsEnd) {
    Analysis file(long_variable_stream());
    file.world.clock.step = 1;
    file.run();
    EXPECT_EQ(file.analyser.FrameCounter(), 2000);
}

}  // namespace
}  // namespace brindle::test
