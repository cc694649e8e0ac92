#pragma once

#include <string>
#include <vector>

#include <brindle/values.h>

#include "support/bytes.h"

namespace brindle::test {

// A folder on the disk, removed with all that is in it at the end of the test.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    [[nodiscard]] const std::string& path() const { return path_; }
    // The full name of an entry, in UTF-8 and as the library takes it.
    [[nodiscard]] std::string path(const std::string& entry) const { return path_ + "/" + entry; }
    [[nodiscard]] String name(const std::string& entry) const;

    // Writes a file and gives its full name.
    String put(const std::string& entry, const Bytes& content) const;
    [[nodiscard]] Bytes content(const std::string& entry) const;
    // What is in the folder, in order.
    [[nodiscard]] std::vector<std::string> entries() const;

private:
    std::string path_;
};

}  // namespace brindle::test
