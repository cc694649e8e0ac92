// Damaged real audio under wrong tags, and any saves and strips of it: no byte of the audio is
// lost, and after some saves the file stays the same.
#include "fuzz/input.h"
#include "fuzz/input_choices.h"
#include "support/audio_promise.h"
#include "support/damaged_files.h"

using brindle::fuzz::Input;
using brindle::fuzz::InputChoices;
using brindle::fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const auto streams = brindle::test::read_streams(BRINDLE_TEST_STREAMS);
    Input input(data, size);
    InputChoices choices(input);
    brindle::test::AudioPromise promise(brindle::test::make_damaged_file(streams, choices));
    constexpr int kMaxSteps = 5;
    for (int step = 0; step < kMaxSteps && !input.empty() && promise.broken().empty(); ++step) {
        promise.step(choices);
    }
    promise.come_to_rest();
    require(promise.broken().empty(), promise.broken());
    return 0;
}
