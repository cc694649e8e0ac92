#include "util/copy_bytes.h"

#include <algorithm>
#include <cstddef>

#include <brindle/error.h>

namespace brindle {

namespace {

constexpr std::int64_t kPiece = 262'144;
constexpr std::int64_t kYieldEvery = 409'600;

}  // namespace

void copy_bytes(BinaryFile& from, std::int64_t from_offset, BinaryFile& to, std::int64_t to_offset,
                std::int64_t count, Host* host) {
    std::int64_t next_yield = kYieldEvery;
    for (std::int64_t done = 0; done < count;) {
        const std::int64_t to_border = kPiece - (to_offset + done) % kPiece;
        const auto wanted = static_cast<std::size_t>(std::min(to_border, count - done));
        const std::size_t copied = to.copy_from(from, from_offset + done, to_offset + done, wanted);
        if (copied == 0) {
            throw Error(RuntimeError::InputPastEnd);
        }
        done += static_cast<std::int64_t>(copied);
        for (; host != nullptr && done >= next_yield; next_yield += kYieldEvery) {
            host->yield();
        }
    }
}

}  // namespace brindle
