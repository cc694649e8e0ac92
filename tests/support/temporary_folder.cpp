#include "support/temporary_folder.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>
#include <system_error>

#include <brindle/text.h>

namespace brindle::test {

TemporaryFolder::TemporaryFolder() {
    std::random_device number;
    do {
        path_ =
            (std::filesystem::temp_directory_path() / ("brindle-test-" + std::to_string(number())))
                .string();
    } while (!std::filesystem::create_directory(path_));
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

String TemporaryFolder::name(const std::string& entry) const {
    return from_utf8(path(entry));
}

String TemporaryFolder::put(const std::string& entry, const Bytes& content) const {
    std::ofstream file(path(entry), std::ios::binary);
    file.write(reinterpret_cast<const char*>(content.data()),
               static_cast<std::streamsize>(content.size()));
    file.close();
    if (!file) {
        throw std::runtime_error("cannot write " + path(entry));
    }
    return name(entry);
}

Bytes TemporaryFolder::content(const std::string& entry) const {
    std::ifstream file(path(entry), std::ios::binary);
    if (!file) {
        throw std::runtime_error("cannot read " + path(entry));
    }
    return std::string(std::istreambuf_iterator<char>(file), {});
}

std::vector<std::string> TemporaryFolder::entries() const {
    std::vector<std::string> entries;
    for (const auto& entry : std::filesystem::directory_iterator(path_)) {
        entries.push_back(entry.path().filename().string());
    }
    std::sort(entries.begin(), entries.end());
    return entries;
}

}  // namespace brindle::test
