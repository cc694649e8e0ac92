// What a person at a terminal sees of a long run.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "batch/progress_text.h"

namespace brindle::host {

// One line on standard error, redrawn in place. Its members may be called from several threads.
class ProgressBar {
public:
    // Begins to count what the paths hold, which takes a while. When names come from standard input
    // their number is unknown.
    ProgressBar(bool is_shown, const std::vector<std::string>& paths);
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;
    ~ProgressBar();

    [[nodiscard]] bool is_shown() const noexcept { return is_shown_; }
    void add_file(std::int64_t bytes) noexcept;
    void draw();
    // Runs a step that writes to the terminal, which must not be the end of a half-drawn line.
    template <typename Step>
    void while_hidden(Step&& step) {
        const std::lock_guard<std::mutex> screen(screen_);
        erase();
        step();
    }

private:
    void count(const std::vector<std::string>& paths);
    void erase();

    using Clock = std::chrono::steady_clock;

    const bool is_shown_;
    const bool colours_;
    const Clock::time_point begin_ = Clock::now();
    std::mutex screen_;
    bool is_drawn_ = false;
    std::atomic<std::int64_t> files_ = 0;
    std::atomic<std::int64_t> bytes_ = 0;
    std::atomic<bool> is_counted_ = false;
    std::atomic<bool> is_ending_ = false;
    Amount total_;  // to be read when it is counted
    std::thread counting_;
};

}  // namespace brindle::host
