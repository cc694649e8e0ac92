#include "util/file_for_reading.h"

#include <brindle/error.h>

namespace brindle {

namespace {

[[noreturn]] void refuse() {
    throw Error(RuntimeError::InvalidCall);
}

}  // namespace

void FileForReading::write_at(std::int64_t /*offset*/, std::span<const std::uint8_t> /*bytes*/) {
    refuse();
}

std::size_t FileForReading::copy_from(BinaryFile& /*source*/, std::int64_t /*source_offset*/,
                                      std::int64_t /*offset*/, std::size_t /*count*/) {
    refuse();
}

void FileForReading::set_length(std::int64_t /*length*/) {
    refuse();
}

void FileForReading::flush() {
    refuse();
}

void FileForReading::flush_data() {
    refuse();
}

}  // namespace brindle
