// A tag of any frames and any edit of it: all other frames stay byte for byte.
#include "fuzz/input.h"
#include "fuzz/input_choices.h"
#include "support/edit_promise.h"

using brindle::fuzz::Input;
using brindle::fuzz::InputChoices;
using brindle::fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const auto streams = brindle::test::read_streams(BRINDLE_TEST_STREAMS);
    Input input(data, size);
    InputChoices choices(input);
    brindle::test::EditPromise promise(
        streams[choices.below(static_cast<std::uint32_t>(streams.size()))], choices);
    const std::string fault = promise.check();
    require(fault.empty(), fault);
    return 0;
}
