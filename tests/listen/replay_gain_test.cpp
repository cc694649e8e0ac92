#include "listen/replay_gain.h"

#include <optional>
#include <string_view>
#include <utility>

#include <gtest/gtest.h>

#include <brindle/cMPEGHeader.h>

#include "support/frames.h"
#include "support/memory_environment.h"
#include "support/tags.h"

namespace brindle::test {
namespace {

TEST(GainIn, IsTheNumberOfDecibels) {
    const std::pair<std::string_view, std::optional<double>> kTexts[] = {
        {"-6.50 dB", -6.5}, {"+3.2 dB", 3.2},    {"0 dB", 0.0},      {" -1.25dB", -1.25},
        {"4", 4.0},         {"-6.50 DB", -6.5},  {"", std::nullopt}, {"dB", std::nullopt},
        {"loud", {}},       {"-6.5 apples", {}}, {"99 dB", {}},      {"nan", {}},
        {"inf dB", {}},     {"1e300 dB", {}},    {"-6,5 dB", {}},    {"--3 dB", {}},
    };
    for (const auto& [text, gain] : kTexts) {
        EXPECT_EQ(host::gain_in(text), gain) << text;
    }
}

std::optional<double> loudness_of(const Tag& tag) {
    MemoryEnvironment world;
    world.files.put(u"song.mp3", tag.bytes() + stream(Frame{}, 120));
    cMPEGHeader header(world.environment);
    header.FileName(u"song.mp3");
    return host::loudness_by_replay_gain(header);
}

TEST(LoudnessByReplayGain, IsTheReferenceLessTheGain) {
    EXPECT_EQ(loudness_of(Tag(3).field("REPLAYGAIN_TRACK_GAIN", "-6.50 dB")), -11.5);
    EXPECT_EQ(loudness_of(Tag(3).field("replaygain_track_gain", "+2.00 dB")), -20);
    EXPECT_EQ(loudness_of(Tag(3).field("REPLAYGAIN_ALBUM_GAIN", "+2.00 dB")), std::nullopt);
    EXPECT_EQ(loudness_of(Tag(3).field("REPLAYGAIN_TRACK_GAIN", "?")), std::nullopt);
}

}  // namespace
}  // namespace brindle::test
