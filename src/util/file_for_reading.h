#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "util/binary_file.h"

namespace brindle {

// Raises error 5: what is only read is not changed.
[[noreturn]] void refuse_change();

// A file whose members that would change it do so.
class FileForReading : public BinaryFile {
public:
    void write_at(std::int64_t offset, std::span<const std::uint8_t> bytes) final;
    std::size_t copy_from(BinaryFile& source, std::int64_t source_offset, std::int64_t offset,
                          std::size_t count) final;
    void set_length(std::int64_t length) final;
    void flush() final;
    void flush_data() final;
    // The bytes belong to somebody else, who closes them.
    void close() final {}
};

}  // namespace brindle
