// What the files of tests that only read have in common.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>

#include <gtest/gtest.h>

#include "util/binary_file.h"

namespace brindle::test {

// Any other call fails the test, even where the exception is caught.
class ReadOnlyFile : public BinaryFile {
public:
    void write_at(std::int64_t, std::span<const std::uint8_t>) final { refuse(); }
    std::size_t copy_from(BinaryFile&, std::int64_t, std::int64_t, std::size_t) final { refuse(); }
    void set_length(std::int64_t) final { refuse(); }
    void flush() final { refuse(); }
    void flush_data() final { refuse(); }
    FileState state() final { return {.length = length()}; }
    void close() final { ADD_FAILURE() << "who opened it closes it"; }

private:
    [[noreturn]] static void refuse() {
        ADD_FAILURE() << "a write to a file for reading";
        throw std::logic_error("a write to a file for reading");
    }
};

}  // namespace brindle::test
