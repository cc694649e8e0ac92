// How many files a batch processes in parallel: as many as bring the highest throughput.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>

namespace brindle::host {

inline constexpr unsigned kMaxJobs = 256;

// A disk or a share answers many requests in the time of one, up to a number that depends on the
// device; a library in the page cache needs no more jobs than there are processors, and some
// devices become slower with each request more. So the throughput is measured at a number of jobs,
// then at more, or else at half of it, for as long as that pays; and again from time to time. It
// begins with few jobs: where more is too much, each try of it is dear. Where the jobs keep the
// processors busy, no other number can be much better, and none is tried.
class JobTuner {
public:
    using Time = std::chrono::steady_clock::time_point;
    // All that the jobs have used so far, or always 0 where nobody knows.
    using ProcessorTime = std::function<std::chrono::nanoseconds()>;

    JobTuner(unsigned processors, ProcessorTime processor_time);

    // Number of jobs to run now, 1 to kMaxJobs.
    [[nodiscard]] unsigned jobs() const { return jobs_; }
    // To be called once, before any has ended. What was done before, such as reading a folder, is
    // no measure.
    void first_job_begins(Time now) { begin_window(now); }
    // Takes the end of one job.
    void job_ended(Time now);

private:
    enum class Phase {
        Measuring,  // the throughput to compare with
        Raising,
        Lowering,
        Settled,
    };

    void begin_window(Time now);
    [[nodiscard]] bool is_far_from_the_best(double throughput) const;
    // A window of one job each tells enough.
    [[nodiscard]] bool is_clear(double throughput) const;
    // Used by the jobs of the time of all processors since the window began, as a share.
    [[nodiscard]] double used_share(double seconds) const;
    void decide(double throughput);
    // The present number is the best so far.
    void keep(double throughput);
    // A multiple and half of the best number, as far as there is one.
    void raise(unsigned factor);
    void lower();
    void settle();
    void change_to(unsigned jobs, Phase phase);

    const unsigned processors_;
    const ProcessorTime processor_time_;
    Phase phase_ = Phase::Measuring;
    unsigned jobs_;
    unsigned best_jobs_;
    double best_throughput_ = 0;
    bool is_raised_ = false;  // more jobs were better
    double used_share_ = 0;   // of the processors, in the last window
    unsigned settled_windows_ = 0;
    unsigned windows_until_measured_again_;

    // Jobs of the number before, which still end, are no measure.
    std::int64_t skipped_ = 0;
    std::int64_t ended_ = 0;
    Time window_start_;
    std::chrono::nanoseconds used_at_start_{};
};

}  // namespace brindle::host
