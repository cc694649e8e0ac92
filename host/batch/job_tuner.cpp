#include "batch/job_tuner.h"

#include <algorithm>

namespace brindle::host {

namespace {

constexpr unsigned kFirstJobsPerProcessor = 8;
// Shorter windows measure chance. Two jobs each: where all wait for the same device, jobs end in
// groups of all that run.
constexpr std::int64_t kJobsEachInWindow = 2;
constexpr std::chrono::milliseconds kShortestWindow{10};
// More jobs must pay for their memory; fewer may cost next to nothing.
constexpr double kGainOfMore = 1.1;
constexpr double kCostOfFewer = 0.95;
constexpr unsigned kWindowsUntilMeasuredAgain = 16;

}  // namespace

JobTuner::JobTuner(unsigned processors, Time start)
    : jobs_(std::clamp(processors, 1U, kMaxJobs / kFirstJobsPerProcessor) * kFirstJobsPerProcessor),
      best_jobs_(jobs_),
      window_start_(start) {}

void JobTuner::job_ended(Time now) {
    if (skipped_ > 0) {
        if (--skipped_ == 0) {
            window_start_ = now;
        }
        return;
    }
    ++ended_;
    const auto elapsed = now - window_start_;
    if (ended_ < kJobsEachInWindow * jobs_ || elapsed < kShortestWindow) {
        return;
    }
    decide(static_cast<double>(ended_) / std::chrono::duration<double>(elapsed).count());
    ended_ = 0;
    window_start_ = now;
}

void JobTuner::decide(double throughput) {
    switch (phase_) {
        case Phase::Settled:
            if (++settled_windows_ == kWindowsUntilMeasuredAgain) {
                phase_ = Phase::Measuring;
            }
            return;
        case Phase::Measuring:
            best_throughput_ = throughput;
            has_doubled_ = false;
            break;
        case Phase::Doubling:
            if (throughput < best_throughput_ * kGainOfMore) {
                break;
            }
            has_doubled_ = true;
            best_jobs_ = jobs_;
            best_throughput_ = throughput;
            break;
        case Phase::Halving:
            if (throughput < best_throughput_ * kCostOfFewer) {
                settle();
                return;
            }
            best_jobs_ = jobs_;
            best_throughput_ = std::max(best_throughput_, throughput);
            break;
    }
    const bool may_double = phase_ != Phase::Halving && best_jobs_ == jobs_ && jobs_ < kMaxJobs;
    if (may_double) {
        try_jobs(jobs_ * 2, Phase::Doubling);
    } else if (!has_doubled_ && best_jobs_ > 1) {
        try_jobs(best_jobs_ / 2, Phase::Halving);
    } else {
        settle();
    }
}

void JobTuner::try_jobs(unsigned jobs, Phase phase) {
    skipped_ = jobs_;
    jobs_ = std::min(jobs, kMaxJobs);
    phase_ = phase;
}

void JobTuner::settle() {
    try_jobs(best_jobs_, Phase::Settled);
    settled_windows_ = 0;
}

}  // namespace brindle::host
