// Any bytes after the identifier of a tag: the reader agrees with the plain reference.
#include <string_view>

#include "fuzz/input.h"
#include "id3v2/reference_tag.h"
#include "id3v2/same_tag.h"
#include "id3v2/walked_tag.h"

using brindle::fuzz::Input;
using brindle::fuzz::require;
using brindle::test::Bytes;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    const std::size_t junk = input.byte();
    const std::uint8_t version = 2 + input.byte() % 3;
    const Bytes file = brindle::test::repeated(junk, 'j') + Bytes("ID3") + Bytes{version, 0, 0} +
                       brindle::test::syncsafe(input.number(3)) + input.rest();

    brindle::test::ReferenceTag reference;
    reference.walk(file, static_cast<long>(junk) + 4);
    const brindle::test::WalkedTag tag(file, static_cast<std::int64_t>(junk));

    const std::string difference = brindle::test::difference(tag, reference);
    require(difference.empty(), "differs in " + difference);
    return 0;
}
