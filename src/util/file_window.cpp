#include "util/file_window.h"

#include <cstring>
#include <utility>

namespace brindle {
namespace {

// Systems keep files in pages, and copy whole ones best.
constexpr std::size_t kPage = 4'096;

std::int64_t begin_of_page(std::int64_t offset) {
    return offset - offset % static_cast<std::int64_t>(kPage);
}

}  // namespace

FileWindow::FileWindow(BinaryFile& file) : FileWindow(file, file.length()) {}

FileWindow::FileWindow(BinaryFile& file, std::int64_t length)
    : file_(file), length_(length), readable_end_(length) {
    file_.expect_reads(ReadOrder::Scattered);
}

void FileWindow::expect_until(std::int64_t end) {
    expected_end_ = end;
    most_at_once_ = kBlock;
    if (std::min(end, readable_end_) - end_ > static_cast<std::int64_t>(kLongRange)) {
        file_.expect_reads(ReadOrder::Sequential);
    }
}

std::span<const std::uint8_t> FileWindow::view_block(std::int64_t offset, std::size_t wanted) {
    return holds(offset, wanted) ? held_from(offset) : refill(offset, wanted);
}

std::size_t FileWindow::copy(std::int64_t offset, std::span<std::uint8_t> into) {
    std::size_t copied = 0;
    while (copied < into.size()) {
        const std::int64_t position = offset + static_cast<std::int64_t>(copied);
        std::span<std::uint8_t> rest = into.subspan(copied);
        const std::span<const std::uint8_t> held = held_from(position);
        if (!held.empty()) {
            const std::size_t count = std::min(rest.size(), held.size());
            std::memcpy(rest.data(), held.data(), count);
            copied += count;
            continue;
        }
        const std::int64_t until = position < begin_ ? begin_ : readable_end_;
        if (position < 0 || position >= until) {
            break;
        }
        if (static_cast<std::uint64_t>(until - position) < rest.size()) {
            rest = rest.first(static_cast<std::size_t>(until - position));
        }
        const std::size_t count = read(position, rest);
        copied += count;
        if (count < rest.size()) {
            break;
        }
    }
    return copied;
}

std::size_t FileWindow::copy_and_read_on(std::int64_t offset, std::span<std::uint8_t> into) {
    const std::span<const std::uint8_t> held = held_from(offset);
    const std::int64_t end = offset + static_cast<std::int64_t>(into.size());
    const std::int64_t tail = length_ - static_cast<std::int64_t>(tail_size_);
    const std::int64_t read_end =
        std::min({expected_end_, end + static_cast<std::int64_t>(kBlock), tail, readable_end_});
    if (held.empty() || held.size() >= into.size() || read_end <= end) {
        return copy(offset, into);
    }
    std::memcpy(into.data(), held.data(), held.size());
    into = into.subspan(held.size());
    const std::int64_t from = end_;
    const auto more = static_cast<std::size_t>(read_end - end);
    move_to(end, end, more);
    ++refills_;
    const std::size_t count = file_.read_scattered_at(from, into, {held_, more});
    bytes_read_ += static_cast<std::int64_t>(count);
    if (count < into.size() + more) {
        // Another program has cut the file.
        readable_end_ = from + static_cast<std::int64_t>(count);
    }
    end_ = std::max(end, from + static_cast<std::int64_t>(count));
    return held.size() + std::min(count, into.size());
}

std::span<const std::uint8_t> FileWindow::held_from(std::int64_t offset) const noexcept {
    if (offset < begin_ || offset >= end_) {
        return {};
    }
    return {data(offset), static_cast<std::size_t>(end_ - offset)};
}

// Does not go beyond length_.
std::size_t FileWindow::read(std::int64_t offset, std::span<std::uint8_t> into) {
    const std::int64_t tail = length_ - static_cast<std::int64_t>(tail_size_);
    const auto before_tail = static_cast<std::size_t>(
        std::clamp<std::int64_t>(tail - offset, 0, static_cast<std::int64_t>(into.size())));
    std::size_t count = before_tail == 0 ? 0 : file_.read_at(offset, into.first(before_tail));
    const bool is_tail = count == into.size() && count <= kLongestTail &&
                         offset + static_cast<std::int64_t>(count) == length_;
    if (is_tail && tail_size_ == 0) {
        std::memcpy(tail_.data(), into.data(), count);
        tail_size_ = count;
        return count;
    }
    bytes_read_ += static_cast<std::int64_t>(count);
    if (count == before_tail && count < into.size()) {
        const auto* const from = tail_.data() + (offset + static_cast<std::int64_t>(count) - tail);
        std::memcpy(into.data() + count, from, into.size() - count);
        count = into.size();
    }
    return count;
}

// Reads on after what the window holds, as far as it is contiguous with what is wanted.
std::span<const std::uint8_t> FileWindow::refill(std::int64_t offset, std::size_t wanted) {
    constexpr auto kBlockLength = static_cast<std::int64_t>(kBlock);
    const auto at_once = static_cast<std::int64_t>(most_at_once_);
    constexpr auto kHeadLength = static_cast<std::int64_t>(kHeadBlock);
    constexpr auto kMaxHeldLength = static_cast<std::int64_t>(kMaxHeld);

    if (offset < 0 || offset >= readable_end_) {
        return {};
    }
    const auto left = static_cast<std::uint64_t>(readable_end_ - offset);
    const std::int64_t wanted_end =
        wanted < left ? offset + static_cast<std::int64_t>(wanted) : readable_end_;
    if (holds(offset, static_cast<std::size_t>(wanted_end - offset))) {
        return held_from(offset);
    }

    const auto takes_several_reads = [&](std::int64_t position) {
        return expected_end_ - position > at_once;
    };
    const auto end_of_read_from = [&](std::int64_t position) {
        std::int64_t end = position + kHeadLength;
        if (takes_several_reads(position)) {
            end = begin_of_page(position + at_once);
        } else if (expected_end_ > position) {
            end = expected_end_;
        }
        return std::min(std::max(wanted_end, end), readable_end_);
    };

    std::int64_t from = std::max(begin_, std::min(keep_from_, offset));
    std::int64_t read_end = end_of_read_from(end_);
    // What lies between the window and a later offset is read only to keep what stands before it.
    bool reads_on = offset >= begin_ && from <= end_ && offset - end_ <= kBlockLength;
    if (reads_on && read_end - from > kMaxHeldLength) {
        from = offset;
        reads_on = offset <= end_;
    }
    if (!reads_on) {
        // So that each of several reads begins with a page, the bytes in front are read as well.
        const bool from_page = takes_several_reads(offset) && offset >= end_;
        from = from_page ? std::max(begin_of_page(offset), end_) : offset;
        read_end = end_of_read_from(from);
    } else if (static_cast<std::size_t>(read_end - begin_) <= capacity_) {
        from = begin_;  // there is room, so nothing needs to be moved
    }
    move_to(from, reads_on ? end_ : from, static_cast<std::size_t>(read_end - from));

    const std::span<std::uint8_t> room(held_ + (end_ - begin_),
                                       static_cast<std::size_t>(read_end - end_));
    ++refills_;
    const std::size_t count = read(end_, room);
    end_ += static_cast<std::int64_t>(count);
    if (count < room.size()) {
        // Another program has cut the file: there is nothing more to come.
        readable_end_ = end_;
    }
    return held_from(offset);
}

// Lets go of all but the bytes from `begin` to `end`, and has room for `capacity` bytes from there.
void FileWindow::move_to(std::int64_t begin, std::int64_t end, std::size_t capacity) {
    constexpr std::size_t kUsual = kBlock + kPage;  // no frame is longer than a page
    const auto kept = static_cast<std::size_t>(end - begin);
    const std::uint8_t* const source = kept == 0 ? nullptr : data(begin);
    if (capacity > capacity_) {
        // The first buffer has room for what most files need, and for each block of a long way with
        // the frame before it, so that nothing is ever moved there; memory that stays untouched
        // costs nothing. Later two buffers are there for a moment, so the last step is taken from
        // a small one.
        const std::size_t usual = capacity_ == 0
                                      ? static_cast<std::size_t>(std::min(
                                            readable_end_, static_cast<std::int64_t>(kUsual)))
                                      : (capacity_ > kMaxHeld / 4 ? kMaxHeld : 2 * capacity_);
        const std::size_t grown = std::max(capacity, usual);
        PlacedBuffer larger(grown);
        held_ = larger.place_for(begin);
        if (kept != 0) {
            std::memcpy(held_, source, kept);
        }
        buffer_ = std::move(larger);
        capacity_ = grown;
    } else {
        held_ = buffer_.place_for(begin);
        if (kept != 0 && held_ != source) {
            std::memmove(held_, source, kept);
        }
    }
    begin_ = begin;
    end_ = end;
}

}  // namespace brindle
