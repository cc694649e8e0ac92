#include "system/utc_text.h"

#include <chrono>
#include <iomanip>
#include <sstream>

namespace brindle::host {

std::string utc_text(std::int64_t seconds_since_1970) {
    namespace chrono = std::chrono;
    const chrono::sys_seconds seconds{chrono::seconds(seconds_since_1970)};
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
