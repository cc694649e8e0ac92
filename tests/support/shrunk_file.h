// A file that another program has cut since its length was asked for.
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>
#include <utility>

#include "support/bytes.h"
#include "support/read_only_file.h"

namespace brindle::test {

// It still tells its old length.
class ShrunkFile final : public ReadOnlyFile {
public:
    ShrunkFile(Bytes left, std::int64_t old_length)
        : left_(std::move(left)), old_length_(old_length) {}

    std::int64_t length() override { return old_length_; }
    std::size_t read_at(std::int64_t offset, std::span<std::uint8_t> into) override {
        const Bytes part =
            left_.part(std::min(static_cast<std::size_t>(offset), left_.size()), into.size());
        std::copy(part.begin(), part.end(), into.begin());
        return part.size();
    }

private:
    Bytes left_;
    std::int64_t old_length_;
};

}  // namespace brindle::test
