#pragma once

#include <cstdint>

#include "util/binary_file.h"
#include "util/host.h"

namespace brindle {

// Neighbouring bytes of a file.
struct Stretch {
    std::int64_t begin = 0;
    std::int64_t end = 0;

    [[nodiscard]] std::int64_t length() const noexcept { return end - begin; }
};

// An open file as it would read without a stretch of it. What writes raises error 5.
class CutFile : public BinaryFile {
public:
    CutFile(BinaryFile& file, const Stretch& cut) noexcept : file_(file), cut_(cut) {}

    std::int64_t length() override { return file_.length() - cut_.length(); }
    std::size_t read_at(std::int64_t offset, std::span<std::uint8_t> into) override;
    void write_at(std::int64_t offset, std::span<const std::uint8_t> bytes) override;
    std::size_t copy_from(BinaryFile& source, std::int64_t source_offset, std::int64_t offset,
                          std::size_t count) override;
    void set_length(std::int64_t length) override;
    void flush() override;
    void close() override { file_.close(); }

    // Copies what stands from `offset` up to `end` into another file.
    void copy_to(BinaryFile& to, std::int64_t to_offset, std::int64_t offset, std::int64_t end,
                 Host* host);

private:
    BinaryFile& file_;
    Stretch cut_;
};

}  // namespace brindle
