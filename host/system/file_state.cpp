#include "system/file_state.h"

#include <chrono>
#include <filesystem>
#include <iomanip>
#include <sstream>
#include <system_error>

#include "system/file_path.h"

namespace brindle::host {

std::optional<std::string> modification_time(const std::string& name) {
    namespace chrono = std::chrono;
    std::error_code error;
    const auto time = std::filesystem::last_write_time(path_of(name), error);
    if (error) {
        return std::nullopt;
    }
    const auto seconds = chrono::floor<chrono::seconds>(chrono::file_clock::to_sys(time));
    const auto day = chrono::floor<chrono::days>(seconds);
    const chrono::year_month_day date(day);
    const chrono::hh_mm_ss clock(seconds - day);
    std::ostringstream text;
    const auto two_digits = [&](auto number) -> std::ostream& {
        return text << std::setw(2) << std::setfill('0') << number;
    };
    text << std::setw(4) << std::setfill('0') << static_cast<int>(date.year()) << '-';
    two_digits(static_cast<unsigned>(date.month())) << '-';
    two_digits(static_cast<unsigned>(date.day())) << 'T';
    two_digits(clock.hours().count()) << ':';
    two_digits(clock.minutes().count()) << ':';
    two_digits(clock.seconds().count()) << 'Z';
    return text.str();
}

}  // namespace brindle::host
