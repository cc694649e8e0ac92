#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "util/binary_file.h"
#include "util/copy_through_memory.h"

namespace brindle {

// A regular file behind the system's own handle.
class WindowsFile final : public BinaryFile {
public:
    // Made before the file is opened, so that no lack of memory can leave that open.
    WindowsFile() = default;
    WindowsFile(const WindowsFile&) = delete;
    WindowsFile& operator=(const WindowsFile&) = delete;
    ~WindowsFile() override;

    // Owns the handle from here on.
    void adopt(void* handle) noexcept { handle_ = handle; }
    // Error 75 for a pipe or a device.
    void require_regular_file() const;

    [[nodiscard]] std::int64_t length() override;
    [[nodiscard]] FileState state() override;
    std::size_t read_at(std::int64_t offset, std::span<std::uint8_t> into) override;
    void write_at(std::int64_t offset, std::span<const std::uint8_t> bytes) override;
    std::size_t copy_from(BinaryFile& source, std::int64_t source_offset, std::int64_t offset,
                          std::size_t count) override;
    void set_length(std::int64_t length) override;
    void flush() override;
    void flush_data() override;
    void close() override;

private:
    void* handle_ = nullptr;
    CopyBlock block_;
};

}  // namespace brindle
