#include "replay_gain.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>
#include <system_error>

#include <brindle/text.h>

#include "suggestions.h"

namespace brindle::host {

std::optional<double> gain_in(std::string_view text) {
    constexpr double kLargest = 64;
    constexpr std::string_view kBlanks = " \t";
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
    if (text.starts_with('+')) {
        text.remove_prefix(1);
    }
    double gain = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), gain);
    if (error != std::errc() || !(std::abs(gain) <= kLargest)) {
        return std::nullopt;
    }
    const auto used = static_cast<std::size_t>(end - text.data());
    std::string_view unit = text.substr(used);
    unit.remove_prefix(std::min(unit.find_first_not_of(kBlanks), unit.size()));
    const bool is_gain =
        unit.empty() || unit.starts_with("dB") || unit.starts_with("db") || unit.starts_with("DB");
    return is_gain ? std::optional(gain) : std::nullopt;
}

std::optional<double> loudness_by_replay_gain(const cMPEGHeader& header) {
    for (const char16_t* name : {u"REPLAYGAIN_TRACK_GAIN", u"replaygain_track_gain"}) {
        const Variant value = header.CustomFieldRetrieve(name);
        const auto* text = std::get_if<String>(&value);
        if (const auto gain = text != nullptr ? gain_in(to_utf8(*text)) : std::nullopt) {
            return kReplayGainReference - *gain;
        }
    }
    return std::nullopt;
}

}  // namespace brindle::host
