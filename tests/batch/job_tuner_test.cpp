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

SimulatedRun simulate_tuned(int files, const JobSeconds& job_seconds, unsigned processors = 2,
                            std::chrono::milliseconds before = {}) {
    JobTuner tuner(processors);
    tuner.first_job_begins(Time{} + before);
    return simulate(
        files, job_seconds, [&] { return tuner.jobs(); },
        [&](Time now) { tuner.job_ended(now + before); });
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

// Reads that wait, with a little work on two processors.
JobSeconds waiting(double seconds) {
    return [=](unsigned running) { return seconds + 100e-6 * std::max(1.0, running / 2.0); };
}

// Two processors and no waits.
double cached(unsigned running) {
    return 200e-6 * std::max(1.0, running / 2.0);
}

// Twice as slow for each doubling above four.
double crowded(unsigned running) {
    const double share = running / 4.0;
    return 4e-3 * (share <= 1 ? 1 : share * share);
}

TEST(JobTuner, BeginsWithFourJobsAProcessor) {
    EXPECT_EQ(JobTuner(1).jobs(), 4U);
    EXPECT_EQ(JobTuner(2).jobs(), 8U);
    EXPECT_EQ(JobTuner(0).jobs(), 4U);
    EXPECT_EQ(JobTuner(1000).jobs(), 256U);
}

TEST(JobTuner, LongWaitsBringManyJobs) {
    const SimulatedRun run = simulate_tuned(20'000, waiting(30e-3));
    EXPECT_GE(run.jobs, 128U);
    EXPECT_LE(run.seconds, best_fixed_seconds(20'000, waiting(30e-3)) / 0.8);
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

TEST(JobTuner, CachedLibraryIsReadByFewJobs) {
    const SimulatedRun run = simulate_tuned(20'000, cached);
    EXPECT_GE(run.jobs, 2U);
    EXPECT_LE(run.jobs, 4U);
    EXPECT_LE(run.seconds, best_fixed_seconds(20'000, cached) * 1.05);
}

TEST(JobTuner, CrowdedDeviceIsFoundWithin500Files) {
    const SimulatedRun run = simulate_tuned(500, crowded);
    EXPECT_GE(run.jobs, 3U);
    EXPECT_LE(run.jobs, 8U);
    EXPECT_LE(simulate_tuned(20'000, crowded).seconds, best_fixed_seconds(20'000, crowded) / 0.9);
}

TEST(JobTuner, TimeBeforeTheFirstJobDoesNotCount) {
    // As if many more jobs were far better than the first eight.
    EXPECT_EQ(simulate_tuned(200, cached, 2, std::chrono::seconds(1)).most_jobs, 16U);
}

TEST(JobTuner, NeverMoreThanTheMost) {
    const SimulatedRun run = simulate_tuned(
        50'000, [](unsigned) { return 1.0; }, 1000);
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
