// Any edit of any tag: a frame that was not named never changes.
#include <cstdint>
#include <cstdlib>

#include <gtest/gtest.h>

#include "support/damaged_files.h"
#include "support/edit_promise.h"

namespace brindle {
namespace {

// Number of files; more if there is time.
std::uint64_t files_to_make() {
    const char* const wanted = std::getenv("BRINDLE_DAMAGED_FILES");
    return wanted != nullptr ? std::strtoull(wanted, nullptr, 10) : 2'000;
}

TEST(DamagedFiles, KeepAllFramesThatAnEditDoesNotName) {
    const auto streams = test::read_streams(BRINDLE_TEST_STREAMS);
    const std::uint64_t files = files_to_make();
    for (std::uint64_t seed = 1; seed <= files; ++seed) {
        test::RandomChoices choices(seed);
        test::EditPromise promise(streams[seed % streams.size()], choices);
        ASSERT_EQ(promise.check(), "") << "seed " << seed;
    }
}

}  // namespace
}  // namespace brindle
