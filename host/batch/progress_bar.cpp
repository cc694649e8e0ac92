#include "batch/progress_bar.h"

#include <algorithm>
#include <cstdio>
#include <system_error>

#include "batch/name_source.h"
#include "system/file_state.h"
#include "system/terminal.h"

namespace brindle::host {

namespace {

constexpr const char* kEraseLine = "\r\x1b[K";

void write_to_terminal(const std::string& text) {
    static_cast<void>(std::fwrite(text.data(), 1, text.size(), stderr));
    static_cast<void>(std::fflush(stderr));
}

}  // namespace

ProgressBar::ProgressBar(bool is_shown, const std::vector<std::string>& paths)
    : is_shown_(is_shown), colours_(wants_colours(Stream::Error)) {
    const bool is_countable = std::find(paths.begin(), paths.end(), kStandardInput) == paths.end();
    if (is_shown_ && is_countable) {
        try {
            counting_ = std::thread([this, paths] { count(paths); });
        } catch (const std::system_error&) {
            // The bar works without a total.
            return;
        }
    }
}

ProgressBar::~ProgressBar() {
    is_ending_ = true;
    if (counting_.joinable()) {
        counting_.join();
    }
    erase();
}

void ProgressBar::add_file(std::int64_t bytes) noexcept {
    files_.fetch_add(1, std::memory_order_relaxed);
    bytes_.fetch_add(bytes, std::memory_order_relaxed);
}

void ProgressBar::draw() {
    if (!is_shown_) {
        return;
    }
    Progress progress;
    progress.done = {files_, bytes_};
    if (is_counted_) {
        progress.total = total_;
    }
    progress.seconds = std::chrono::duration<double>(Clock::now() - begin_).count();
    const std::string line = progress_text(progress, terminal_columns(), colours_);
    const std::lock_guard<std::mutex> screen(screen_);
    write_to_terminal(kEraseLine + line);
    is_drawn_ = true;
}

void ProgressBar::count(const std::vector<std::string>& paths) {
    NameSource names({paths});
    while (const auto found = names.next()) {
        if (is_ending_) {
            return;
        }
        const auto state = state_of(found->name);
        ++total_.files;
        total_.bytes += state ? state->size : 0;
    }
    is_counted_ = true;
}

void ProgressBar::erase() {
    if (is_drawn_) {
        write_to_terminal(kEraseLine);
        is_drawn_ = false;
    }
}

}  // namespace brindle::host
