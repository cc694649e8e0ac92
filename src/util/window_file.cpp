#include "util/window_file.h"

#include <algorithm>

namespace brindle {

std::size_t WindowFile::read_at(std::int64_t offset, std::span<std::uint8_t> into) {
    if (into.size() > FileWindow::kHeadBlock) {
        return window_.copy(offset, into);
    }
    const std::span<const std::uint8_t> bytes = window_.view(offset, into.size());
    std::copy(bytes.begin(), bytes.end(), into.begin());
    return bytes.size();
}

}  // namespace brindle
