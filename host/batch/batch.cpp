#include "batch/batch.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include "batch/progress_bar.h"
#include "output/printable_text.h"
#include "output/standard_streams.h"
#include "system/interruption.h"
#include "system/processor_time.h"
#include "system/terminal.h"

namespace brindle::host {

namespace {

// Answers that wait for that of an earlier file.
constexpr std::size_t kMaxWaiting = 1024;
constexpr std::chrono::milliseconds kDrawAgain{100};

unsigned processors() {
    return std::max(1U, std::thread::hardware_concurrency());
}

class Batch {
public:
    Batch(const BatchOptions& options, const Job& job)
        : job_(job),
          fixed_jobs_(options.jobs > 0 || !options.is_busy ? options.jobs : processors()),
          names_(static_cast<const PathOptions&>(options), options.named_folders),
          progress_(!options.quiet && is_terminal(Stream::Error), options.paths),
          write_(options.write ? options.write : write_output),
          output_is_terminal_(!options.write && is_terminal(Stream::Output)) {}

    BatchOutcome run() {
        wait();
        for (std::thread& thread : threads_) {
            thread.join();
        }
        if (fault_) {
            std::rethrow_exception(fault_);
        }
        outcome_.is_interrupted = is_interrupted();
        return outcome_;
    }

private:
    struct Task {
        FoundName found;
        std::size_t number;
    };
    // Empty until the file is done.
    using Waiting = std::optional<std::pair<std::string, Answer>>;
    using Lock = std::unique_lock<std::mutex>;

    // Number of files to process in parallel.
    [[nodiscard]] unsigned jobs() const { return fixed_jobs_ > 0 ? fixed_jobs_ : tuner_.jobs(); }

    // A thread starts when there may be a file for it: few files need few threads.
    [[nodiscard]] bool needs_thread() const {
        return threads_.size() < jobs() && threads_.size() <= written_ + waiting_.size() &&
               !is_over_ && !has_all_threads_;
    }

    void start_threads() {
        while (needs_thread()) {
            try {
                threads_.emplace_back([this] { work(); });
                ++working_;
            } catch (const std::system_error&) {
                // Continue with fewer threads.
                if (threads_.empty()) {
                    throw;
                }
                has_all_threads_ = true;
            }
        }
    }

    void wait() {
        Lock lock(answers_);
        start_threads();
        while (working_ > 0) {
            if (progress_.is_shown()) {
                done_.wait_for(lock, kDrawAgain);
                lock.unlock();
                progress_.draw();
                lock.lock();
            } else {
                done_.wait(lock);
            }
            start_threads();
        }
    }

    void work() {
        try {
            bool has_turn = false;
            while (std::optional<Task> task = take(has_turn)) {
                Answer answer = job_(task->found);
                progress_.add_file(answer.bytes);
                has_turn = deliver(task->number, {std::move(task->found.name), std::move(answer)});
            }
        } catch (...) {
            const Lock lock(answers_);
            fault_ = fault_ ? fault_ : std::current_exception();
            end();
        }
        const Lock lock(answers_);
        --working_;
        done_.notify_one();
    }

    // Starts no further file.
    void end() {
        is_over_ = true;
        room_.notify_all();
        turn_.notify_all();
    }

    std::optional<Task> take(bool has_turn) {
        if (!has_turn) {
            Lock lock(answers_);
            turn_.wait(lock, [this] { return running_ < jobs() || is_over_; });
            if (is_over_) {
                return std::nullopt;
            }
            ++running_;
        }
        // One thread at a time gets a name, and may have to wait for it.
        const Lock naming(naming_);
        {
            Lock lock(answers_);
            room_.wait(lock, [this] { return waiting_.size() < kMaxWaiting || is_over_; });
            if (is_over_) {
                return std::nullopt;
            }
        }
        std::optional<FoundName> found;
        if (!is_interrupted()) {
            found = names_.next();
        }
        const Lock lock(answers_);
        if (!found) {
            end();
            return std::nullopt;
        }
        if (written_ + waiting_.size() == 0) {
            tuner_.first_job_begins(std::chrono::steady_clock::now());
        }
        waiting_.emplace_back();
        if (needs_thread()) {
            done_.notify_one();
        }
        return Task{*std::move(found), written_ + waiting_.size() - 1};
    }

    // Whether its thread goes on with another file. To wake one of those that wait for their turn
    // instead takes longer than many a file.
    bool count_ended_job() {
        if (fixed_jobs_ == 0) {
            const unsigned before = jobs();
            tuner_.job_ended(std::chrono::steady_clock::now());
            if (jobs() > before) {
                turn_.notify_all();
            }
        }
        if (running_ <= jobs()) {
            return true;
        }
        --running_;
        return false;
    }

    // The thread with the next answer writes it, and all that wait after it. The answer is whether
    // the thread goes on with another file.
    bool deliver(std::size_t number, std::pair<std::string, Answer> answer) {
        Lock lock(answers_);
        const bool goes_on = count_ended_job();
        waiting_[number - written_] = std::move(answer);
        if (is_writing_) {
            return goes_on;
        }
        is_writing_ = true;
        while (!waiting_.empty() && waiting_.front() && !fault_) {
            std::vector<Waiting> ready;
            while (!waiting_.empty() && waiting_.front()) {
                ready.push_back(std::move(waiting_.front()));
                waiting_.pop_front();
            }
            written_ += ready.size();
            room_.notify_all();
            lock.unlock();
            write(ready);
            lock.lock();
        }
        is_writing_ = false;
        return goes_on;
    }

    void write(const std::vector<Waiting>& ready) {
        std::string lines;
        for (const Waiting& waiting : ready) {
            const auto& [name, answer] = *waiting;
            lines += answer.output;
            ++(answer.is_unchanged ? outcome_.unchanged : outcome_.files);
            if (answer.error) {
                ++outcome_.failures;
                write_lines(lines);
                progress_.while_hidden(
                    [&name = name, &answer = answer] { write_error(name, *answer.error); });
            }
        }
        write_lines(lines);
        for (const Waiting& waiting : ready) {
            if (const auto& when_written = waiting->second.when_written) {
                when_written();
            }
        }
    }

    // A slow pipe does not delay the bar.
    void write_lines(std::string& lines) {
        if (lines.empty()) {
            return;
        }
        if (output_is_terminal_) {
            progress_.while_hidden([&] { write_(lines); });
        } else {
            write_(lines);
        }
        lines.clear();
    }

    const Job& job_;
    const unsigned fixed_jobs_;  // 0: the tuner decides
    NameSource names_;
    ProgressBar progress_;
    BatchOutcome outcome_;  // of the writing thread
    const std::function<void(std::string_view)> write_;
    const bool output_is_terminal_;

    std::mutex naming_;
    std::mutex answers_;  // guards all below
    std::condition_variable turn_;
    std::condition_variable room_;
    std::condition_variable done_;
    std::vector<std::thread> threads_;
    bool has_all_threads_ = false;  // the system creates no more
    JobTuner tuner_{processors(), processor_time};
    unsigned running_ = 0;
    bool is_over_ = false;
    std::deque<Waiting> waiting_;
    std::size_t written_ = 0;
    bool is_writing_ = false;
    unsigned working_ = 0;
    std::exception_ptr fault_;
};

}  // namespace

ExitStatus BatchOutcome::status() const {
    if (is_interrupted) {
        return interrupted_status();
    }
    return failures > 0 ? ExitStatus::SomeFileFailed : ExitStatus::AllFine;
}

std::string BatchOutcome::files_text() const {
    const std::string text =
        has_only_new ? counted(files, "new file") + ", " + std::to_string(unchanged) + " unchanged"
                     : counted(files, "file");
    return (is_interrupted ? "Interrupted: " : "") + text;
}

BatchOutcome run_batch(const BatchOptions& options, const Job& job) {
    watch_for_interruption(options.changes_files ? SecondSignal::Ignored : SecondSignal::Ends);
    return Batch(options, job).run();
}

}  // namespace brindle::host
