#include "suggestions.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>

namespace brindle::host {

namespace {

std::string point_text(const std::optional<std::int64_t>& point) {
    return point ? std::to_string(*point) : "";
}

// Independent of the locale.
std::string fixed_text(double value, int places) {
    constexpr double kTen = 10;
    const double scale = std::pow(kTen, places);
    // Less than half of the last place below zero is not -0.
    const double rounded = std::round(value * scale) / scale + 0.0;
    std::array<char, 64> digits{};
    const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), rounded,
                                            std::chars_format::fixed, places);
    return {digits.data(), end};
}

std::string end_style_text(const Listening& heard, const EndStyleTexts& texts) {
    if (!heard.end) {
        return "";
    }
    return heard.end == EndStyle::Fade ? texts.fade : texts.cold;
}

}  // namespace

std::vector<Suggestion> suggestions(const Listening& heard, const EndStyleTexts& texts) {
    std::vector<Suggestion> list;
    list.push_back(
        {kCueInColumn, point_text(heard.sound ? std::optional(heard.sound->begin) : std::nullopt)});
    list.push_back({kSectoneColumn, point_text(heard.next_start)});
    if (!texts.is_empty()) {
        list.push_back({kEndStyleColumn, end_style_text(heard, texts)});
    }
    // As ReplayGain writes them: "-6.50 dB" and "0.987654".
    constexpr int kGainPlaces = 2;
    constexpr int kPeakPlaces = 6;
    const bool is_known = heard.loudness && heard.reference == Reference::Whole;
    list.push_back(
        {kTrackGainColumn,
         is_known ? fixed_text(kReplayGainReference - *heard.loudness, kGainPlaces) + " dB" : ""});
    list.push_back({kTrackPeakColumn, is_known ? fixed_text(heard.sample_peak, kPeakPlaces) : ""});
    return list;
}

}  // namespace brindle::host
