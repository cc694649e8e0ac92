#include "util/byte_source.h"

#include <array>

namespace brindle {

std::int64_t count_bytes(const ByteSource& source) {
    constexpr std::size_t kBlock = 16'384;
    std::array<std::uint8_t, kBlock> block{};
    const std::unique_ptr<ByteStream> stream = source.open();
    std::int64_t count = 0;
    for (std::size_t read = block.size(); read == block.size();) {
        read = stream->read(block);
        count += static_cast<std::int64_t>(read);
    }
    return count;
}

}  // namespace brindle
