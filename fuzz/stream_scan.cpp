// A file and claims about its tags: the analyser agrees with the slow and simple reference.
#include "fuzz/input.h"
#include "mpeg/clsMPEG.h"
#include "mpeg/same_outcome.h"
#include "support/memory_environment.h"

using brindle::fuzz::Input;
using brindle::fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    brindle::test::MemoryEnvironment world;
    brindle::clsMPEG analyser(world.environment);
    brindle::test::ReferenceAnalyser reference;

    const std::uint8_t forms = input.byte();
    analyser.HasV1Tag = reference.HasV1Tag = (forms & 1) != 0;
    analyser.ID3v2Length = reference.ID3v2Length = static_cast<std::int32_t>(input.number(2));
    analyser.ID3v2Offset = reference.ID3v2Offset = input.byte();

    const brindle::test::Bytes file = input.rest();
    const brindle::String name = u"file.mp3";
    world.files.put(name, file);
    analyser.FileName(name);
    reference.FileName(file);

    const std::string difference = brindle::test::difference(analyser, reference);
    require(difference.empty(), "differs in " + difference);
    require(world.files.bytes_read() <= 2 * file.size(), "a file is read twice at most");
    return 0;
}
