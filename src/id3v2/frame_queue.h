// Frames as the reader found them, one behind the other.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "id3v2/stored_text.h"
#include "id3v2/tag_layout.h"

namespace brindle {

struct QueuedFrame {
    FrameId id;
    std::uint32_t size;
    const std::uint8_t* value;

    [[nodiscard]] StoredText text() const noexcept { return StoredText::in_file({value, size}); }
};

// In blocks that never move: memory is asked for seldom, and given back block by block while the
// frames go elsewhere.
class FrameQueue {
public:
    [[nodiscard]] bool empty() const noexcept { return first_size_ == 0 && blocks_.empty(); }
    // Neighbours of one id, as many as a block holds together.
    [[nodiscard]] std::span<const QueuedFrame> front_run() const noexcept {
        const std::span<const QueuedFrame> block = front_block();
        std::size_t end = taken_ + 1;
        while (end < block.size() && block[end].id == block[taken_].id) {
            ++end;
        }
        return block.subspan(taken_, end - taken_);
    }

    void push(const QueuedFrame& frame) {
        if (first_size_ < kFirstBlock && blocks_.empty()) {
            if (!first_) {
                first_ = std::make_unique_for_overwrite<FirstBlock>();
            }
            (*first_)[first_size_] = frame;
            ++first_size_;
        } else {
            push_behind(frame);
        }
    }

    void pop(std::size_t count) noexcept {
        taken_ += count;
        if (taken_ < front_block().size()) {
            return;
        }
        taken_ = 0;
        if (first_size_ != 0) {
            first_size_ = 0;
            return;
        }
        blocks_[front_] = {};
        ++front_;
        if (front_ == blocks_.size()) {
            front_ = 0;
            blocks_.clear();
        }
    }

private:
    static constexpr std::size_t kFirstBlock = 32;  // most tags are small
    using FirstBlock = std::array<QueuedFrame, kFirstBlock>;
    static constexpr std::size_t kBlock = 1024;

    [[nodiscard]] std::span<const QueuedFrame> front_block() const noexcept {
        return first_size_ != 0 ? std::span<const QueuedFrame>(*first_).first(first_size_)
                                : std::span<const QueuedFrame>(blocks_[front_]);
    }
    void push_behind(const QueuedFrame& frame) {
        if (blocks_.empty() || blocks_.back().size() == kBlock) {
            std::vector<QueuedFrame> block;
            block.reserve(kBlock);
            blocks_.push_back(std::move(block));
        }
        blocks_.back().push_back(frame);
    }

    std::unique_ptr<FirstBlock> first_;
    std::size_t first_size_ = 0;  // so many of them are filled
    std::vector<std::vector<QueuedFrame>> blocks_;
    std::size_t front_ = 0;  // the first block that is still there
    std::size_t taken_ = 0;  // frames of the first block that are gone
};

}  // namespace brindle
