// The one way of reading: a window of bytes that moves over an open file.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>

#include "util/binary_file.h"
#include "util/placed_buffer.h"

namespace brindle {

// Keeps system calls few and memory small: reads blocks, never a header at a time and never the
// whole file. The head of a file is read in 8 KiB, later blocks are at most 96 KiB.
class FileWindow {
public:
    static constexpr std::size_t kHeadBlock = std::size_t{8} * 1024;
    static constexpr std::size_t kBlock = std::size_t{96} * 1024;
    // The most that keep_from() can make the window hold: 101 of the longest frames and a block.
    static constexpr std::size_t kMaxHeld = std::size_t{384} * 1024;
    // A range that the system reads ahead in; in a shorter one it would read much that is not
    // needed after its end.
    static constexpr std::size_t kLongRange = std::size_t{1024} * 1024;

    // Asks the file for its length, once.
    explicit FileWindow(BinaryFile& file);
    // For a caller that has just asked.
    FileWindow(BinaryFile& file, std::int64_t length);

    [[nodiscard]] std::int64_t length() const noexcept { return length_; }

    // The bytes from `offset` on: `wanted` of them, fewer only where the file ends. Valid until
    // the next call. Cheap when the window holds them already.
    [[nodiscard]] std::span<const std::uint8_t> view(std::int64_t offset, std::size_t wanted) {
        if (holds(offset, wanted)) {
            return {data(offset), wanted};
        }
        const std::span<const std::uint8_t> bytes = refill(offset, wanted);
        return bytes.first(std::min(bytes.size(), wanted));
    }
    // Everything from `offset` on that the window holds, `wanted` bytes at least, fewer only where
    // the file ends: a whole block for loops that go through it on their own.
    [[nodiscard]] std::span<const std::uint8_t> view_block(std::int64_t offset, std::size_t wanted);
    // What the window holds from `offset` on, without reading anything.
    [[nodiscard]] std::span<const std::uint8_t> held_from(std::int64_t offset) const noexcept;
    // A view of it would go back, and read a block again.
    [[nodiscard]] bool has_passed(std::int64_t offset) const noexcept { return offset < begin_; }
    // Copies bytes out without moving the window: what it holds from memory, the rest straight
    // from the file. The number copied, smaller only where the file ends.
    std::size_t copy(std::int64_t offset, std::span<std::uint8_t> into);
    // The same for a caller that continues after these bytes: what is not held of them is read in
    // one call with what is expected after them, which is where the window then is.
    std::size_t copy_and_read_on(std::int64_t offset, std::span<std::uint8_t> into);

    // The caller will want the bytes up to `end`: the next refills go that far (a block at a
    // time) and not much farther. Without it a refill takes kHeadBlock.
    void expect_until(std::int64_t end);
    // The same for a range that is known to be short: it is read at once.
    void expect_at_once(std::int64_t end) noexcept {
        expected_end_ = end;
        most_at_once_ = kMaxHeld;
    }
    // Bytes from `offset` on stay in the window while later ones are viewed (up to kMaxHeld), so
    // that going back to them costs nothing. A leap of more than a block lets them go.
    void keep_from(std::int64_t offset) noexcept { keep_from_ = offset; }
    // What was read of the file so far, twice where it was read twice, without the tail.
    [[nodiscard]] std::int64_t bytes_read() const noexcept { return bytes_read_; }
    // How often the file was read into the window; a scan looks at the clock when it has changed.
    [[nodiscard]] std::uint32_t refills() const noexcept { return refills_; }

private:
    [[nodiscard]] bool holds(std::int64_t offset, std::size_t wanted) const noexcept {
        return offset >= begin_ && offset <= end_ &&
               static_cast<std::uint64_t>(end_ - offset) >= wanted;
    }
    [[nodiscard]] const std::uint8_t* data(std::int64_t offset) const noexcept {
        return held_ + (offset - begin_);
    }
    std::size_t read(std::int64_t offset, std::span<std::uint8_t> into);
    std::span<const std::uint8_t> refill(std::int64_t offset, std::size_t wanted);
    void move_to(std::int64_t begin, std::int64_t end, std::size_t capacity);

    BinaryFile& file_;
    std::int64_t length_;
    std::int64_t readable_end_;  // length_, less once a read has met an earlier end
    std::int64_t begin_ = 0;     // file offset of the first byte held
    std::int64_t end_ = 0;       // file offset after the last byte held
    std::int64_t expected_end_ = 0;
    std::size_t most_at_once_ = kBlock;
    std::int64_t keep_from_ = std::numeric_limits<std::int64_t>::max();
    std::int64_t bytes_read_ = 0;
    std::uint32_t refills_ = 0;
    std::size_t capacity_ = 0;
    PlacedBuffer buffer_;
    std::uint8_t* held_ = nullptr;  // the byte at begin_
    // The last bytes of the file after they have been copied separately, as for a record; a later
    // pass through the file does not read them again.
    static constexpr std::size_t kLongestTail = 128;
    std::array<std::uint8_t, kLongestTail> tail_{};
    std::size_t tail_size_ = 0;
};

}  // namespace brindle
