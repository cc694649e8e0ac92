#include "util/copy_through_memory.h"

#include <algorithm>
#include <span>

namespace brindle {
namespace {

constexpr std::int64_t kPage = 4096;
constexpr std::size_t kBlock = std::size_t{256} * 1024;

}  // namespace

std::size_t copy_through_memory(BinaryFile& from, std::int64_t from_offset, BinaryFile& to,
                                std::int64_t to_offset, std::size_t count, CopyBlock& block) {
    std::size_t done = 0;
    while (done < count) {
        if (!block) {
            block = std::make_unique_for_overwrite<std::uint8_t[]>(kBlock);
        }
        const auto so_far = static_cast<std::int64_t>(done);
        const auto into_page = static_cast<std::size_t>((to_offset + so_far) % kPage);
        const std::span<std::uint8_t> part(block.get(), std::min(count - done, kBlock - into_page));
        const std::size_t bytes = from.read_at(from_offset + so_far, part);
        to.write_at(to_offset + so_far, part.first(bytes));
        done += bytes;
        if (bytes < part.size()) {
            break;
        }
    }
    return done;
}

}  // namespace brindle
