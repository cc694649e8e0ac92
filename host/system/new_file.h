// A file that gets its name when it is complete.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace brindle::host {

// Until then a file with another name beside it, which is removed if the new one does not become
// complete.
class NewFile {
public:
    NewFile();
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;
    ~NewFile();

    // All answer why that could not be done, or nothing. A file that has the name already stays as
    // it is until `complete`, and is replaced then; the new one has its access rights.
    [[nodiscard]] std::optional<std::string> create(const std::string& name);
    [[nodiscard]] std::optional<std::string> append(std::string_view text) const;
    // Returns when the device has the file.
    [[nodiscard]] std::optional<std::string> complete();

private:
    struct Handle;
    std::unique_ptr<Handle> handle_;
    std::string target_;
    std::string temporary_;
};

}  // namespace brindle::host
