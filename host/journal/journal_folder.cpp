#include "journal/journal_folder.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <unistd.h>

#include "system/file_path.h"
#include "system/private_file.h"

namespace brindle::host {

namespace {

namespace chrono = std::chrono;

constexpr std::string_view kEnding = ".journal";

// `20261122T103305.123456789Z-4711.journal`
bool is_journal_name(std::string_view name) {
    return name.size() > kEnding.size() && name.front() >= '0' && name.front() <= '9' &&
           name.ends_with(kEnding);
}

// False if it cannot be removed.
bool remove_file(const std::string& name) {
    std::error_code error;
    return std::filesystem::remove(path_of(name), error);
}

}  // namespace

std::string new_journal_name() {
    const auto now = chrono::time_point_cast<chrono::nanoseconds>(chrono::system_clock::now());
    const auto day = chrono::floor<chrono::days>(now);
    const chrono::year_month_day date(day);
    const chrono::hh_mm_ss clock(now - day);
    std::array<char, 64> name{};
    (void)std::snprintf(name.data(), name.size(), "%04d%02u%02uT%02d%02d%02d.%09lldZ-%ld%s",
                        static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                        static_cast<unsigned>(date.day()), static_cast<int>(clock.hours().count()),
                        static_cast<int>(clock.minutes().count()),
                        static_cast<int>(clock.seconds().count()),
                        static_cast<long long>(clock.subseconds().count()),
                        static_cast<long>(getpid()), kEnding.data());
    return name.data();
}

std::vector<std::string> journals_in(const std::string& folder) {
    std::vector<std::string> names;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(path_of(folder), error), end;
         !error && entry != end; entry.increment(error)) {
        if (is_journal_name(name_of(entry->path().filename()))) {
            names.push_back(name_of(entry->path()));
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

void remove_old_journals(const std::string& folder, const JournalLimits& limits) {
    struct Kept {
        std::string name;
        std::int64_t size;
    };
    const std::int64_t now =
        chrono::duration_cast<chrono::seconds>(chrono::system_clock::now().time_since_epoch())
            .count();
    constexpr std::int64_t kDay = 86'400;
    std::vector<Kept> kept;
    std::int64_t total = 0;
    for (const std::string& name : journals_in(folder)) {
        PrivateFile journal;
        if (journal.open(name) || journal.is_in_use()) {
            continue;
        }
        if ((now - journal.modified_seconds()) / kDay >= limits.days) {
            static_cast<void>(remove_file(name));
            continue;
        }
        kept.push_back({name, journal.size()});
        total += journal.size();
    }
    for (const Kept& oldest : kept) {
        if (total <= limits.bytes) {
            break;
        }
        if (remove_file(oldest.name)) {
            total -= oldest.size;
        }
    }
}

}  // namespace brindle::host
