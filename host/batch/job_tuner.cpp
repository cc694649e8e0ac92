#include "batch/job_tuner.h"

#include <algorithm>
#include <utility>

namespace brindle::host {

namespace {

constexpr unsigned kFirstJobsPerProcessor = 4;
// Shorter windows measure chance. Two jobs each: where all wait for the same device, jobs end in
// groups of all that run.
constexpr std::int64_t kJobsEachInWindow = 2;
constexpr std::chrono::milliseconds kShortestWindow{5};
// More jobs must pay for their memory; fewer may cost next to nothing.
constexpr double kGainOfMore = 1.1;
constexpr double kCostOfFewer = 0.95;
// Of twice as many jobs.
constexpr double kGainFarFromTheBest = 1.6;
constexpr double kClearLoss = 0.6;
// Of the time of all processors. The system's count lags behind by up to a few milliseconds.
constexpr double kBusyShare = 0.75;
// Twice as many jobs use all of it.
constexpr double kHalfBusyShare = 0.5;
// Twice as long each time: a number that chance chose does not stay, one that is confirmed does.
constexpr unsigned kMinWindowsUntilMeasuredAgain = 8;
constexpr unsigned kMaxWindowsUntilMeasuredAgain = 64;

}  // namespace

JobTuner::JobTuner(unsigned processors, ProcessorTime processor_time)
    : processors_(std::max(processors, 1U)),
      processor_time_(std::move(processor_time)),
      jobs_(std::min(processors_ * kFirstJobsPerProcessor, kMaxJobs)),
      best_jobs_(jobs_),
      windows_until_measured_again_(kMinWindowsUntilMeasuredAgain) {}

void JobTuner::begin_window(Time now) {
    ended_ = 0;
    window_start_ = now;
    used_at_start_ = processor_time_();
}

void JobTuner::job_ended(Time now) {
    if (skipped_ > 0) {
        if (--skipped_ == 0) {
            begin_window(now);
        }
        return;
    }
    ++ended_;
    const auto elapsed = now - window_start_;
    if (ended_ < jobs_ || elapsed < kShortestWindow) {
        return;
    }
    const double seconds = std::chrono::duration<double>(elapsed).count();
    const double throughput = static_cast<double>(ended_) / seconds;
    if (ended_ < kJobsEachInWindow * jobs_ && !is_clear(throughput)) {
        return;
    }
    used_share_ = used_share(seconds);
    decide(throughput);
    begin_window(now);
}

bool JobTuner::is_far_from_the_best(double throughput) const {
    return throughput >= best_throughput_ * kGainFarFromTheBest;
}

bool JobTuner::is_clear(double throughput) const {
    // A wrong throughput of the first number shows at the second. Otherwise a gain or a loss must
    // be larger than chance makes it.
    return best_throughput_ == 0 ||
           (phase_ == Phase::Raising &&
            (is_far_from_the_best(throughput) || throughput <= best_throughput_ * kClearLoss));
}

double JobTuner::used_share(double seconds) const {
    const std::chrono::duration<double> used = processor_time_() - used_at_start_;
    return used.count() / (seconds * processors_);
}

void JobTuner::decide(double throughput) {
    switch (phase_) {
        case Phase::Settled:
            if (++settled_windows_ == windows_until_measured_again_) {
                windows_until_measured_again_ =
                    std::min(2 * windows_until_measured_again_, kMaxWindowsUntilMeasuredAgain);
                phase_ = Phase::Measuring;
            }
            break;
        case Phase::Measuring:
            best_throughput_ = throughput;
            is_raised_ = false;
            raise(2);
            break;
        case Phase::Raising:
            if (throughput >= best_throughput_ * kGainOfMore) {
                const bool is_far = is_far_from_the_best(throughput);
                keep(throughput);
                is_raised_ = true;
                raise(is_far && used_share_ < kHalfBusyShare ? 4 : 2);
            } else if (is_raised_) {
                settle();
            } else {
                lower();
            }
            break;
        case Phase::Lowering:
            if (throughput >= best_throughput_ * kCostOfFewer) {
                keep(throughput);
                lower();
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

void JobTuner::raise(unsigned factor) {
    if (best_jobs_ < kMaxJobs && used_share_ < kBusyShare) {
        change_to(std::min(best_jobs_ * factor, kMaxJobs), Phase::Raising);
    } else if (is_raised_) {
        settle();
    } else {
        lower();
    }
}

void JobTuner::lower() {
    if (best_jobs_ > 1 && used_share_ < kBusyShare) {
        change_to(best_jobs_ / 2, Phase::Lowering);
    } else {
        settle();
    }
}

void JobTuner::settle() {
    change_to(best_jobs_, Phase::Settled);
    settled_windows_ = 0;
}

void JobTuner::change_to(unsigned jobs, Phase phase) {
    // Of fewer jobs all go on; of more some still end, which is no measure.
    skipped_ = jobs < jobs_ ? jobs_ : 0;
    jobs_ = jobs;
    phase_ = phase;
}

}  // namespace brindle::host
