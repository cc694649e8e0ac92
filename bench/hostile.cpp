// Opens every file that is known to be hard on a reader, one by one, for callgrind to count what
// each costs: the part of its output for a file has the file's number, length and
// name.
//
//   brindle_hostile <folder>      where the files are written
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

#include <valgrind/callgrind.h>

#include <brindle/cMPEGHeader.h>
#include <brindle/text.h>

#include "facade/known_inputs.h"

namespace {

// What is counted: the same for each file, and nothing of what is made once.
void open(const brindle::String& name) {
    brindle::cMPEGHeader header;
    header.FileName(name);
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 2) {
        std::cerr << "usage: brindle_hostile <folder>\n";
        return 2;
    }
    const std::string path = std::string(arguments[1]) + "/hostile.mp3";
    const brindle::String name = brindle::from_utf8(path);
    for (const brindle::test::AttackFile& input : brindle::test::known_inputs()) {
        std::ofstream(path, std::ios::binary)
            .write(reinterpret_cast<const char*>(input.file.data()),
                   static_cast<std::streamsize>(input.file.size()));
        open(name);
        const std::string title = std::to_string(input.file.size()) + " " + input.name;
        CALLGRIND_ZERO_STATS;
        CALLGRIND_TOGGLE_COLLECT;
        open(name);
        CALLGRIND_TOGGLE_COLLECT;
        CALLGRIND_DUMP_STATS_AT(title.c_str());
    }
    std::filesystem::remove(path);
    return 0;
}
