#include "batch/progress_text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace brindle::host {

namespace {

constexpr const char* kBarColour = "\x1b[36m";
constexpr const char* kNoColour = "\x1b[0m";
constexpr const char* kGap = "  ";

std::string bytes_text(std::int64_t bytes) {
    constexpr std::array<const char*, 5> kUnits{"B", "kB", "MB", "GB", "TB"};
    constexpr double kStep = 1000;
    auto amount = static_cast<double>(bytes);
    std::size_t unit = 0;
    while (amount >= kStep && unit + 1 < kUnits.size()) {
        amount /= kStep;
        ++unit;
    }
    std::array<char, 32> text{};
    static_cast<void>(std::snprintf(text.data(), text.size(), unit == 0 ? "%.0f %s" : "%.1f %s",
                                    amount, kUnits[unit]));
    return text.data();
}

std::string rate_text(const Progress& progress) {
    const double rate =
        progress.seconds > 0 ? static_cast<double>(progress.done.files) / progress.seconds : 0;
    return std::to_string(std::llround(rate)) + " files/s";
}

// The part of the work that is done. Folders may grow while they are walked.
double share_done(const Progress& progress) {
    if (progress.total->files == 0) {
        return 1;
    }
    const auto done = static_cast<double>(progress.done.files);
    return std::min(1.0, done / static_cast<double>(progress.total->files));
}

std::string time_left_text(const Progress& progress, double share) {
    if (share <= 0) {
        return {};
    }
    constexpr long long kSecondsPerMinute = 60;
    const long long left = std::llround(progress.seconds * (1 - share) / share);
    std::array<char, 32> text{};
    static_cast<void>(std::snprintf(text.data(), text.size(), "%02lld:%02lld left",
                                    left / kSecondsPerMinute, left % kSecondsPerMinute));
    return kGap + std::string(text.data());
}

std::string bar_text(double share, std::size_t width) {
    const auto filled = static_cast<std::size_t>(share * static_cast<double>(width));
    std::string bar(filled, '=');
    if (filled < width) {
        bar += '>';
        bar.resize(width, ' ');
    }
    return "[" + bar + "]";
}

}  // namespace

std::string progress_text(const Progress& progress, int columns, bool colours) {
    // The last column stays free: a terminal may start the next line when it is written.
    const auto room = static_cast<std::size_t>(std::max(columns - 1, 0));
    std::string facts = std::to_string(progress.done.files);
    if (progress.total) {
        facts += " of " + std::to_string(progress.total->files);
    }
    facts +=
        std::string(" files") + kGap + bytes_text(progress.done.bytes) + kGap + rate_text(progress);
    if (!progress.total) {
        return facts.substr(0, room);
    }
    const double share = share_done(progress);
    constexpr double kPercent = 100;
    std::string percent = std::to_string(static_cast<int>(share * kPercent)) + " %";
    constexpr std::size_t kPercentWidth = 6;
    percent.insert(0, kPercentWidth - percent.size(), ' ');
    facts = percent + kGap + facts + time_left_text(progress, share);

    constexpr std::size_t kShortestBar = 5;
    constexpr std::size_t kLongestBar = 30;
    constexpr std::size_t kFrame = 2;  // its brackets
    if (facts.size() + kFrame + kShortestBar > room) {
        return facts.substr(0, room);
    }
    const std::string bar = bar_text(share, std::min(kLongestBar, room - facts.size() - kFrame));
    return (colours ? kBarColour + bar + kNoColour : bar) + facts;
}

}  // namespace brindle::host
