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
// Of twice as many jobs.
constexpr double kGainFarFromTheBest = 1.6;
constexpr unsigned kWindowsUntilMeasuredAgain = 64;

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

// Half is tried before more: where more is too much, each try of it is dear.
void JobTuner::decide(double throughput) {
    switch (phase_) {
        case Phase::Settled:
            if (++settled_windows_ == kWindowsUntilMeasuredAgain) {
                phase_ = Phase::Measuring;
            }
            break;
        case Phase::Measuring:
            best_throughput_ = throughput;
            is_lowered_ = false;
            lower();
            break;
        case Phase::Lowering:
            if (throughput >= best_throughput_ * kCostOfFewer) {
                keep(throughput);
                is_lowered_ = true;
                lower();
            } else if (is_lowered_) {
                settle();
            } else {
                raise(2);
            }
            break;
        case Phase::Raising:
            if (throughput >= best_throughput_ * kGainFarFromTheBest) {
                keep(throughput);
                raise(4);
            } else if (throughput >= best_throughput_ * kGainOfMore) {
                keep(throughput);
                raise(2);
            } else {
                settle();
            }
            break;
    }
}

void JobTuner::keep(double throughput) {
    best_jobs_ = jobs_;
    best_throughput_ = std::max(best_throughput_, throughput);
}

void JobTuner::lower() {
    if (best_jobs_ > 1) {
        change_to(best_jobs_ / 2, Phase::Lowering);
    } else if (is_lowered_) {
        settle();
    } else {
        raise(2);
    }
}

void JobTuner::raise(unsigned factor) {
    if (best_jobs_ < kMaxJobs) {
        change_to(std::min(best_jobs_ * factor, kMaxJobs), Phase::Raising);
    } else {
        settle();
    }
}

void JobTuner::settle() {
    change_to(best_jobs_, Phase::Settled);
    settled_windows_ = 0;
}

void JobTuner::change_to(unsigned jobs, Phase phase) {
    skipped_ = jobs_;
    jobs_ = jobs;
    phase_ = phase;
}

}  // namespace brindle::host
