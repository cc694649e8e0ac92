#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace brindle {

// Bytes that are made while they are read, one after the other.
class ByteStream {
public:
    ByteStream() = default;
    ByteStream(const ByteStream&) = delete;
    ByteStream& operator=(const ByteStream&) = delete;
    virtual ~ByteStream() = default;

    // Fills `into`; fewer bytes than asked for only at the end.
    virtual std::size_t read(std::span<std::uint8_t> into) = 0;
};

// What such bytes are made from: each stream begins at the start.
class ByteSource {
public:
    ByteSource() = default;
    ByteSource(const ByteSource&) = delete;
    ByteSource& operator=(const ByteSource&) = delete;
    virtual ~ByteSource() = default;

    [[nodiscard]] virtual std::unique_ptr<ByteStream> open() const = 0;
};

// How many bytes a stream of it has: reads them all.
[[nodiscard]] std::int64_t count_bytes(const ByteSource& source);

}  // namespace brindle
