// All files that are known to be hard on a reader: those made to do harm, and the inputs that the
// fuzzers have kept.
#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "support/attack_files.h"

namespace brindle::test {

// Every input, for whatever target it was kept, is also a file that a host might open.
inline std::vector<AttackFile> corpus_files() {
    std::vector<AttackFile> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(BRINDLE_TEST_CORPUS)) {
        if (entry.is_regular_file()) {
            std::ifstream file(entry.path(), std::ios::binary);
            const std::string bytes(std::istreambuf_iterator<char>(file), {});
            const auto& path = entry.path();
            files.push_back({"corpus/" + path.parent_path().filename().string() + "/" +
                                 path.filename().string(),
                             Bytes(bytes)});
        }
    }
    std::sort(files.begin(), files.end(),
              [](const AttackFile& a, const AttackFile& b) { return a.name < b.name; });
    return files;
}

inline const std::vector<AttackFile>& known_inputs() {
    static const std::vector<AttackFile> all = [] {
        std::vector<AttackFile> every = attack_files();
        const std::vector<AttackFile> corpus = corpus_files();
        every.insert(every.end(), corpus.begin(), corpus.end());
        return every;
    }();
    return all;
}

}  // namespace brindle::test
