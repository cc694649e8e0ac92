// Frames as the reader found them, one behind the other.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "id3v2/tag_layout.h"

namespace brindle {

struct QueuedFrame {
    FrameId id;
    std::uint32_t size;
    const std::uint8_t* value;
};

// In blocks that never move: memory is asked for seldom, and given back block by block while the
// frames go elsewhere.
class FrameQueue {
public:
    [[nodiscard]] bool empty() const noexcept { return blocks_.empty(); }
    [[nodiscard]] const QueuedFrame& front() const { return blocks_[first_block_][first_frame_]; }

    void push(const QueuedFrame& frame) {
        if (blocks_.empty() || blocks_.back().size() == blocks_.back().capacity()) {
            add_block();
        }
        blocks_.back().push_back(frame);
    }

    void pop() noexcept {
        ++first_frame_;
        if (first_frame_ < blocks_[first_block_].size()) {
            return;
        }
        first_frame_ = 0;
        blocks_[first_block_] = {};
        ++first_block_;
        if (first_block_ == blocks_.size()) {
            first_block_ = 0;
            blocks_.clear();
        }
    }

private:
    void add_block() {
        constexpr std::size_t kFirstBlock = 32;  // most tags are small
        constexpr std::size_t kBlock = 1024;
        std::vector<QueuedFrame> block;
        block.reserve(blocks_.empty() ? kFirstBlock : kBlock);
        blocks_.push_back(std::move(block));
    }

    std::vector<std::vector<QueuedFrame>> blocks_;
    std::size_t first_block_ = 0;
    std::size_t first_frame_ = 0;
};

}  // namespace brindle
