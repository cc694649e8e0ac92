// How many files a batch processes in parallel: as many as bring the highest throughput.
#pragma once

#include <chrono>
#include <cstdint>

namespace brindle::host {

inline constexpr unsigned kMaxJobs = 256;

// A disk or a share answers many requests in the time of one, up to a number that depends on the
// device; a library in the page cache needs no more jobs than there are processors, and some
// devices become slower with each request more. So the throughput is measured at a number of jobs,
// then at twice and half of it, for as long as that pays, and again from time to time.
class JobTuner {
public:
    using Time = std::chrono::steady_clock::time_point;

    JobTuner(unsigned processors, Time start);

    // Number of jobs to run now, 1 to kMaxJobs.
    [[nodiscard]] unsigned jobs() const { return jobs_; }
    // Takes the end of one job.
    void job_ended(Time now);

private:
    enum class Phase {
        Measuring,  // the throughput to compare with
        Doubling,
        Halving,
        Settled,
    };

    void decide(double throughput);
    void try_jobs(unsigned jobs, Phase phase);
    void settle();

    Phase phase_ = Phase::Measuring;
    unsigned jobs_;
    unsigned best_jobs_;
    double best_throughput_ = 0;
    bool has_doubled_ = false;
    unsigned settled_windows_ = 0;

    // Jobs of the number before, which still end, are no measure.
    std::int64_t skipped_ = 0;
    std::int64_t ended_ = 0;
    Time window_start_;
};

}  // namespace brindle::host
