// Files that only the user can write.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace brindle::host {

class PrivateFile {
public:
    PrivateFile() = default;
    PrivateFile(const PrivateFile&) = delete;
    PrivateFile& operator=(const PrivateFile&) = delete;
    ~PrivateFile() { close(); }

    // A new file that the user alone can open, locked as long as it is open. What has the name
    // already is left alone, be it a symbolic link. The answer is why it was not created, or
    // nothing.
    [[nodiscard]] std::optional<std::string> create(const std::string& name);
    // For reading. Refused is what is no regular file, a symbolic link, a file of another user, and
    // one that others may write. The answer is why, or nothing.
    [[nodiscard]] std::optional<std::string> open(const std::string& name);
    void close();
    [[nodiscard]] bool is_open() const { return held_ != kNone; }

    // Both answer why that could not be done, or nothing.
    [[nodiscard]] std::optional<std::string> append(std::span<const std::uint8_t> bytes) const;
    // Until the device has it.
    [[nodiscard]] std::optional<std::string> flush() const;

    // When the file was opened.
    [[nodiscard]] std::int64_t size() const { return size_; }
    [[nodiscard]] std::int64_t modified_seconds() const { return modified_; }
    // Fewer bytes where the file ends or cannot be read.
    [[nodiscard]] std::vector<std::uint8_t> read(std::int64_t offset, std::size_t count) const;
    // Whether its writer still has it open.
    [[nodiscard]] bool is_being_written() const { return is_being_written_; }
    // Whether another program has it open in these ways.
    [[nodiscard]] bool is_in_use() const;

private:
    // A descriptor, or a handle of the system; none of them is this value.
    static constexpr std::intptr_t kNone = -1;
    std::intptr_t held_ = kNone;
    std::int64_t size_ = 0;
    std::int64_t modified_ = 0;
    bool is_being_written_ = false;
};

// Waits until the device has the name of a new file that is flushed next. The answer is why it has
// not, or nothing.
[[nodiscard]] std::optional<std::string> flush_name(const std::string& name);

// Makes the folder and those above it that are missing, for the user alone. The answer is why that
// could not be done, or nothing.
[[nodiscard]] std::optional<std::string> make_private_folder(const std::string& name);

}  // namespace brindle::host
