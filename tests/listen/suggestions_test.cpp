#include "listen/suggestions.h"

#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace brindle::test {
namespace {

using host::EndStyle;
using host::EndStyleTexts;
using host::Listening;
using host::Reference;

const std::string kGain = "field:REPLAYGAIN_TRACK_GAIN";
const std::string kPeak = "field:REPLAYGAIN_TRACK_PEAK";

Listening some_sound() {
    Listening heard;
    heard.loudness = -11.5;
    heard.sample_peak = 0.98765449;
    heard.sound = {1'025, 200'000};
    heard.next_start = 198'000;
    heard.end = EndStyle::Fade;
    return heard;
}

std::map<std::string, std::string> cells_of(const Listening& heard,
                                            const EndStyleTexts& texts = {}) {
    std::map<std::string, std::string> cells;
    for (const auto& [column, text] : host::suggestions(heard, texts)) {
        cells.emplace(column, text);
    }
    return cells;
}

TEST(Suggestions, AreWhatWasHeard) {
    const std::map<std::string, std::string> expected{
        {"cue-in", "1025"}, {"sectone", "198000"}, {kGain, "-6.50 dB"}, {kPeak, "0.987654"}};
    EXPECT_EQ(cells_of(some_sound()), expected);
}

TEST(Suggestions, AreEmptyWhereNothingWasHeard) {
    const std::map<std::string, std::string> expected{
        {"cue-in", ""}, {"sectone", ""}, {"end-style", ""}, {kGain, ""}, {kPeak, ""}};
    EXPECT_EQ(cells_of({}, {.cold = "Cold", .fade = "Fade"}), expected);
}

TEST(Suggestions, PointAtTheBeginningIsZero) {
    Listening heard = some_sound();
    heard.sound->begin = 0;
    EXPECT_EQ(cells_of(heard)["cue-in"], "0");
}

TEST(Suggestions, GainHasTwoPlacesAndNoPlus) {
    const std::pair<double, const char*> kGains[] = {
        {-18, "0.00 dB"},      {-18.004, "0.00 dB"}, {-17.996, "0.00 dB"}, {-18.006, "0.01 dB"},
        {-17.994, "-0.01 dB"}, {-30.25, "12.25 dB"}, {-3.1, "-14.90 dB"},  {-69.999, "52.00 dB"}};
    for (const auto& [loudness, text] : kGains) {
        Listening heard = some_sound();
        heard.loudness = loudness;
        EXPECT_EQ(cells_of(heard)[kGain], text) << loudness;
    }
}

TEST(Suggestions, PeakHasSixPlacesAndMayBeAboveFullScale) {
    const std::pair<double, const char*> kPeaks[] = {
        {1, "1.000000"}, {1.2345678, "1.234568"}, {0.0000004, "0.000000"}, {0.1, "0.100000"}};
    for (const auto& [peak, text] : kPeaks) {
        Listening heard = some_sound();
        heard.sample_peak = peak;
        EXPECT_EQ(cells_of(heard)[kPeak], text) << peak;
    }
}

TEST(Suggestions, PartOfAFileGivesNoGain) {
    for (const Reference reference : {Reference::Partial, Reference::ReplayGain}) {
        Listening heard = some_sound();
        heard.reference = reference;
        const auto cells = cells_of(heard);
        EXPECT_EQ(cells.at(kGain), "");
        EXPECT_EQ(cells.at(kPeak), "");
        EXPECT_EQ(cells.at("cue-in"), "1025");
    }
}

TEST(Suggestions, EndStyleIsInTheWordsThatAreGiven) {
    Listening heard = some_sound();
    EXPECT_EQ(cells_of(heard, {.cold = "Ends", .fade = "Fades"})["end-style"], "Fades");
    EXPECT_EQ(cells_of(heard, {.cold = "Ends", .fade = ""})["end-style"], "");
    heard.end = EndStyle::Cold;
    EXPECT_EQ(cells_of(heard, {.cold = "Ends", .fade = "Fades"})["end-style"], "Ends");
}

}  // namespace
}  // namespace brindle::test
