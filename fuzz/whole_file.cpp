// Any file: it is opened and every member is read. It does not change, and is read at most twice.
#include <string>

#include <brindle/cMPEGHeader.h>
#include <brindle/frame_walk.h>
#include <brindle/save_plan.h>

#include "fuzz/input.h"
#include "fuzz/read_all_members.h"
#include "support/memory_environment.h"

using brindle::fuzz::Input;
using brindle::fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const brindle::test::Bytes file = Input(data, size).rest();
    const brindle::String name = u"song.mp3";
    brindle::test::MemoryEnvironment world;
    world.files.put(name, file);

    brindle::cMPEGHeader header(world.environment);
    header.FileName(name);
    // A second tag may lie in the bytes that were searched for the first one.
    const std::string text = file.text();
    const bool has_second_tag = text.find("ID3") != text.rfind("ID3");
    require(world.files.bytes_read() <= (has_second_tag ? 3 : 2) * file.size(),
            "a file is read twice at most");
    require(world.files.open_files() == 0, "the file is closed");

    const auto answers = brindle::fuzz::read_all_members(header);
    require(answers == brindle::fuzz::read_all_members(header), "asking changes nothing");

    world.files.reset_counts();
    (void)brindle::walk_frames(header);
    require(world.files.bytes_read() <= 2 * file.size(), "a file is walked once");
    (void)brindle::plan_save(header);
    require(world.files.content(name) == file, "reading changes nothing");
    require(world.files.names().size() == 1, "reading makes no file");
    return 0;
}
