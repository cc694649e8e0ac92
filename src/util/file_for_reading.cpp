#include "util/file_for_reading.h"

#include <brindle/error.h>

namespace brindle {

void refuse_change() {
    throw Error(RuntimeError::InvalidCall);
}

void FileForReading::write_at(std::int64_t /*offset*/, std::span<const std::uint8_t> /*bytes*/) {
    refuse_change();
}

std::size_t FileForReading::copy_from(BinaryFile& /*source*/, std::int64_t /*source_offset*/,
                                      std::int64_t /*offset*/, std::size_t /*count*/) {
    refuse_change();
}

void FileForReading::set_length(std::int64_t /*length*/) {
    refuse_change();
}

void FileForReading::flush() {
    refuse_change();
}

void FileForReading::flush_data() {
    refuse_change();
}

}  // namespace brindle
