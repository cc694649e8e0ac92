// A list that grows without moving what it holds.
#pragma once

#include <cstddef>
#include <span>
#include <utility>
#include <vector>

namespace brindle {

// Takes no memory while it is empty, one block for what most tags hold, and then more of them: a
// hundred thousand entries never have to be in memory twice.
template <typename T>
class BlockList {
public:
    static constexpr std::size_t kFirstBlock = 32;

    [[nodiscard]] std::size_t size() const noexcept { return size_; }
    [[nodiscard]] bool empty() const noexcept { return size_ == 0; }
    [[nodiscard]] T& operator[](std::size_t at) noexcept { return *place(at); }
    [[nodiscard]] const T& operator[](std::size_t at) const noexcept { return *place(at); }
    [[nodiscard]] T& back() noexcept { return *place(size_ - 1); }
    // The entries up to kFirstBlock, which lie side by side.
    [[nodiscard]] std::span<const T> first_block() const noexcept { return first_; }

    // All or nothing.
    void push_back(T&& entry) { emplace_back(std::move(entry)); }
    template <typename... Parts>
    void emplace_back(Parts&&... parts) {
        if (size_ < kFirstBlock) {
            if (first_.capacity() == 0) {
                first_.reserve(kFirstBlock);
            }
            first_.emplace_back(std::forward<Parts>(parts)...);
        } else {
            if ((size_ - kFirstBlock) / kBlock == more_.size()) {
                std::vector<T> block;
                block.reserve(kBlock);
                more_.push_back(std::move(block));
            }
            more_.back().emplace_back(std::forward<Parts>(parts)...);
        }
        ++size_;
    }
    void pop_back() noexcept {
        --size_;
        if (size_ < kFirstBlock) {
            first_.pop_back();
            return;
        }
        more_.back().pop_back();
        if (more_.back().empty()) {
            more_.pop_back();
        }
    }

private:
    static constexpr std::size_t kBlock = 512;

    [[nodiscard]] const T* place(std::size_t at) const noexcept {
        if (at < kFirstBlock) {
            return first_.data() + at;
        }
        const std::size_t behind = at - kFirstBlock;
        return more_[behind / kBlock].data() + behind % kBlock;
    }
    [[nodiscard]] T* place(std::size_t at) noexcept {
        return const_cast<T*>(std::as_const(*this).place(at));
    }

    std::vector<T> first_;
    std::vector<std::vector<T>> more_;
    std::size_t size_ = 0;
};

}  // namespace brindle
