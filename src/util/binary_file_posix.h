#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "util/binary_file.h"
#include "util/copy_through_memory.h"

namespace brindle {

// A regular file behind the system's own descriptor.
class PosixFile final : public BinaryFile {
public:
    // Made before the descriptor is opened, so that no lack of memory can leave that open.
    PosixFile() = default;
    PosixFile(const PosixFile&) = delete;
    PosixFile& operator=(const PosixFile&) = delete;
    ~PosixFile() override;

    // Owns the descriptor from here on.
    void adopt(int descriptor) noexcept { descriptor_ = descriptor; }
    // Error 75 for a folder, a pipe or a device. The first length() or state() asked for is that of
    // now.
    void require_regular_file();
    [[nodiscard]] int descriptor() const noexcept { return descriptor_; }

    [[nodiscard]] std::int64_t length() override { return state().length; }
    [[nodiscard]] FileState state() override;
    void expect_reads(ReadOrder order) override;
    std::size_t read_at(std::int64_t offset, std::span<std::uint8_t> into) override;
    std::size_t read_scattered_at(std::int64_t offset, std::span<std::uint8_t> first,
                                  std::span<std::uint8_t> second) override;
    void write_at(std::int64_t offset, std::span<const std::uint8_t> bytes) override;
    std::size_t copy_from(BinaryFile& source, std::int64_t source_offset, std::int64_t offset,
                          std::size_t count) override;
    [[nodiscard]] ByteRange data_in(const ByteRange& range) override;
    void set_length(std::int64_t length) override;
    void flush() override;
    void flush_data() override;
    void close() override;

private:
    std::size_t copy_through_kernel(const PosixFile& source, std::int64_t source_offset,
                                    std::int64_t offset, std::size_t count);

    int descriptor_ = -1;
    std::optional<FileState> state_at_opening_;
    std::optional<ReadOrder> expected_order_;  // as far as the system was told
    bool is_sparse_ = false;
    bool kernel_copies_ = true;  // until it refuses
    CopyBlock block_;
};

}  // namespace brindle
