// Real audio, damaged, under tags that lie: whatever is saved and stripped, and in whatever order,
// every byte of the audio stays.
#include <cstdint>
#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include "support/audio_promise.h"
#include "support/damaged_files.h"
#include "support/id3v1.h"

namespace brindle {
namespace {

using test::AudioPromise;
using test::Bytes;
using test::DamagedFile;
using test::RandomChoices;

// Number of files; more if there is time.
std::uint64_t files_to_make() {
    const char* const wanted = std::getenv("BRINDLE_DAMAGED_FILES");
    return wanted != nullptr ? std::strtoull(wanted, nullptr, 10) : 500;
}

TEST(DamagedFiles, KeepTheirAudioThroughAnySavesAndStrips) {
    const auto streams = test::read_streams(BRINDLE_TEST_STREAMS);
    const std::uint64_t files = files_to_make();
    std::uint64_t steps = 0;
    for (std::uint64_t seed = 1; seed <= files; ++seed) {
        RandomChoices choices(seed);
        AudioPromise promise(test::make_damaged_file(streams, choices));
        for (std::uint32_t step = choices.between(1, 5); step > 0; --step) {
            promise.step(choices);
            ASSERT_EQ(promise.broken(), "") << "seed " << seed;
            ++steps;
        }
        promise.come_to_rest();
        ASSERT_EQ(promise.broken(), "") << "seed " << seed;
    }
    EXPECT_GE(steps, files);
}

// Without this the test above could not fail.
TEST(DamagedFiles, LostByteIsNoticed) {
    const DamagedFile file{Bytes("ID3 and some audio"), Bytes("some audio")};
    EXPECT_EQ(test::audio_fault(file, Bytes("ID3 x some audio")), "");
    EXPECT_EQ(test::audio_fault(file, Bytes("ID3 xome audio")), "audio was lost");
    EXPECT_EQ(test::audio_fault(file, Bytes("some audi0")), "audio was lost");
    EXPECT_EQ(test::audio_fault(file, Bytes("some audio") + test::Id3v1().bytes()), "");
}

}  // namespace
}  // namespace brindle
