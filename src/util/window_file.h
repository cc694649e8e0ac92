#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "util/file_for_reading.h"
#include "util/file_window.h"

namespace brindle {

// The file under a window, for what reads files: short pieces come out of the window, which moves
// to them, so that many of one neighbourhood cost one read. Long ones do not move it.
class WindowFile final : public FileForReading {
public:
    explicit WindowFile(FileWindow& window) noexcept : window_(window) {}

    std::int64_t length() override { return window_.length(); }
    FileState state() override { return {.length = window_.length()}; }
    std::size_t read_at(std::int64_t offset, std::span<std::uint8_t> into) override;

private:
    FileWindow& window_;
};

}  // namespace brindle
