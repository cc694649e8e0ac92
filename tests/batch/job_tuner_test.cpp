#include "batch/job_tuner.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <functional>
#include <queue>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace brindle::host {
namespace {

using Seconds = std::chrono::duration<double>;
using Time = JobTuner::Time;

// Duration of a job in a simulated library, by the number of running jobs.
using JobSeconds = std::function<double(unsigned running)>;

struct SimulatedRun {
    double seconds = 0;
    unsigned jobs = 0;  // at the end
    unsigned most_jobs = 0;
};

// Of each job, on two processors.
constexpr double kWork = 100e-6;

// Every job is given its time when it begins, with some spread.
SimulatedRun simulate(int files, const JobSeconds& job_seconds,
                      const std::function<unsigned()>& jobs,
                      const std::function<void(Time)>& ended) {
    std::mt19937 random(1);
    std::uniform_real_distribution<double> spread(0.8, 1.2);
    std::priority_queue<double, std::vector<double>, std::greater<>> running;
    double now = 0;
    int begun = 0;
    SimulatedRun run;
    while (begun < files || !running.empty()) {
        while (begun < files && running.size() < jobs()) {
            const auto count = static_cast<unsigned>(running.size()) + 1;
            running.push(now + job_seconds(count) * spread(random));
            run.most_jobs = std::max(run.most_jobs, count);
            ++begun;
        }
        now = running.top();
        running.pop();
        ended(Time{} + std::chrono::duration_cast<Time::duration>(Seconds(now)));
    }
    run.seconds = now;
    run.jobs = jobs();
    return run;
}

struct Circumstances {
    unsigned processors = 2;
    std::chrono::milliseconds before_first_job{};
    bool is_processor_time_known = true;
};

SimulatedRun simulate_tuned(int files, const JobSeconds& job_seconds,
                            const Circumstances& circumstances = {}) {
    int ended = 0;
    JobTuner tuner(circumstances.processors, [&] {
        const Seconds used(circumstances.is_processor_time_known ? ended * kWork : 0);
        return std::chrono::duration_cast<std::chrono::nanoseconds>(used);
    });
    const auto before = circumstances.before_first_job;
    tuner.first_job_begins(Time{} + before);
    return simulate(
        files, job_seconds, [&] { return tuner.jobs(); },
        [&](Time now) {
            ++ended;
            tuner.job_ended(now + before);
        });
}

SimulatedRun simulate_fixed(int files, const JobSeconds& job_seconds, unsigned jobs) {
    return simulate(
        files, job_seconds, [=] { return jobs; }, [](Time) {});
}

double best_fixed_seconds(int files, const JobSeconds& job_seconds) {
    double best = INFINITY;
    for (unsigned jobs = 1; jobs <= kMaxJobs; jobs *= 2) {
        best = std::min(best, simulate_fixed(files, job_seconds, jobs).seconds);
    }
    return best;
}

// Reads that wait, and then the work.
JobSeconds waiting(double seconds) {
    return [=](unsigned running) { return std::max(seconds + kWork, kWork * running / 2); };
}

double cached(unsigned running) {
    return waiting(0)(running);
}

// Twice as slow for each doubling above four.
double crowded(unsigned running) {
    const double share = running / 4.0;
    return 4e-3 * (share <= 1 ? 1 : share * share);
}

TEST(JobTuner, BeginsWithFourJobsAProcessor) {
    const auto first_jobs = [](unsigned processors) {
        return JobTuner(processors, [] { return std::chrono::nanoseconds(); }).jobs();
    };
    EXPECT_EQ(first_jobs(1), 4U);
    EXPECT_EQ(first_jobs(2), 8U);
    EXPECT_EQ(first_jobs(0), 4U);
    EXPECT_EQ(first_jobs(1000), 256U);
}

TEST(JobTuner, LongWaitsBringManyJobs) {
    const SimulatedRun run = simulate_tuned(20'000, waiting(30e-3));
    EXPECT_GE(run.jobs, 128U);
    EXPECT_LE(run.seconds, best_fixed_seconds(20'000, waiting(30e-3)) / 0.8);
}

// With the best number all files take the time of eight, one after the other; the way to that
// number takes three.
TEST(JobTuner, SmallLibraryWithLongWaitsFindsManyJobsSoon) {
    EXPECT_LE(simulate_tuned(2'000, waiting(25e-3)).seconds,
              best_fixed_seconds(2'000, waiting(25e-3)) / 0.7);
}

TEST(JobTuner, ShortWaitsCostLittleAgainstTheBestNumber) {
    EXPECT_LE(simulate_tuned(20'000, waiting(3e-3)).seconds,
              best_fixed_seconds(20'000, waiting(3e-3)) / 0.8);
}

// The first files of a folder bring its inodes with them, and other files use those.
TEST(JobTuner, SlowBeginningDoesNotCountAgainstMoreJobs) {
    const auto warming_up = [](int& files) {
        return [&files](unsigned running) { return waiting(++files < 50 ? 12e-3 : 3e-3)(running); };
    };
    int files = 0;
    const SimulatedRun run = simulate_tuned(2'000, warming_up(files));
    int files_of_best = 0;
    const SimulatedRun best = simulate_fixed(2'000, warming_up(files_of_best), 64);
    EXPECT_GE(run.jobs, 32U);
    EXPECT_LE(run.seconds, best.seconds / 0.8);
}

TEST(JobTuner, NumberOfChanceDoesNotStay) {
    // All is quick for a moment with the first number, and more jobs seem to bring nothing.
    int files = 0;
    const SimulatedRun run = simulate_tuned(
        600, [&](unsigned running) { return waiting(++files < 100 ? 0.5e-3 : 5e-3)(running); });
    EXPECT_GE(run.jobs, 32U);
}

TEST(JobTuner, BusyProcessorsNeedNoOtherNumber) {
    const SimulatedRun run = simulate_tuned(20'000, cached);
    EXPECT_EQ(run.jobs, 8U);
    EXPECT_EQ(run.most_jobs, 8U);
    EXPECT_LE(run.seconds, best_fixed_seconds(20'000, cached) * 1.01);
}

// 28 jobs keep both processors busy.
TEST(JobTuner, NumberIsNotRaisedFarAboveWhatKeepsTheProcessorsBusy) {
    const SimulatedRun run = simulate_tuned(20'000, waiting(13 * kWork));
    EXPECT_LE(run.most_jobs, 32U);
    EXPECT_LE(run.seconds, best_fixed_seconds(20'000, waiting(13 * kWork)) / 0.9);
}

TEST(JobTuner, CachedLibraryIsReadByFewJobsWithoutProcessorTime) {
    const SimulatedRun run = simulate_tuned(20'000, cached, {.is_processor_time_known = false});
    EXPECT_GE(run.jobs, 2U);
    EXPECT_LE(run.jobs, 4U);
    EXPECT_LE(run.seconds, best_fixed_seconds(20'000, cached) * 1.05);
}

TEST(JobTuner, CrowdedDeviceIsFoundWithin500Files) {
    const SimulatedRun run = simulate_tuned(500, crowded);
    EXPECT_GE(run.jobs, 3U);
    EXPECT_LE(run.jobs, 8U);
    EXPECT_LE(run.seconds, best_fixed_seconds(500, crowded) / 0.75);
    EXPECT_LE(simulate_tuned(20'000, crowded).seconds, best_fixed_seconds(20'000, crowded) / 0.9);
}

TEST(JobTuner, TimeBeforeTheFirstJobDoesNotCount) {
    // As if many more jobs were far better than the first eight.
    const Circumstances late{.before_first_job = std::chrono::seconds(1),
                             .is_processor_time_known = false};
    EXPECT_EQ(simulate_tuned(200, cached, late).most_jobs, 16U);
}

TEST(JobTuner, NeverMoreThanTheMost) {
    const SimulatedRun run =
        simulate_tuned(50'000, [](unsigned) { return 1.0; }, {.processors = 1000});
    EXPECT_EQ(run.most_jobs, kMaxJobs);
}

TEST(JobTuner, LibraryThatIsNotCachedAnyMoreIsMeasuredAgain) {
    int files = 0;
    const SimulatedRun run = simulate_tuned(60'000, [&](unsigned running) {
        return ++files < 30'000 ? cached(running) : waiting(30e-3)(running);
    });
    EXPECT_GE(run.jobs, 64U);
}

}  // namespace
}  // namespace brindle::host
