// Runs a fuzz target once over each file in the given folders.
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "fuzz/input.h"

int main(int count, char** arguments) {
    std::size_t files = 0;
    try {
        for (int number = 1; number < count; ++number) {
            for (const auto& entry :
                 std::filesystem::recursive_directory_iterator(arguments[number])) {
                if (!entry.is_regular_file()) {
                    continue;
                }
                std::ifstream file(entry.path(), std::ios::binary);
                const std::vector<char> bytes(std::istreambuf_iterator<char>(file), {});
                // Names the input in case it ends the program.
                std::printf("%s\n", entry.path().c_str());
                static_cast<void>(std::fflush(stdout));
                LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()),
                                       bytes.size());
                ++files;
            }
        }
    } catch (const std::exception& error) {
        static_cast<void>(std::fprintf(stderr, "replay: %s\n", error.what()));
        return 1;
    }
    std::printf("%zu files\n", files);
    return files > 0 ? 0 : 1;
}
