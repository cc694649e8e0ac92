#include "util/copy_bytes.h"

#include <algorithm>
#include <cstddef>

#include <brindle/error.h>

namespace brindle {

namespace {

constexpr std::int64_t kPiece = 262'144;
constexpr std::int64_t kYieldEvery = 409'600;

// Where the holes of a sparse file end, so that they can be holes in its copy too.
std::int64_t end_of_hole(BinaryFile& from, const ByteRange& range, const ByteRange& data) {
    if (data.begin != data.end) {
        return data.begin;
    }
    if (from.length() < range.end) {
        throw Error(RuntimeError::InputPastEnd);
    }
    return range.end;
}

}  // namespace

void copy_bytes(BinaryFile& from, std::int64_t from_offset, BinaryFile& to, std::int64_t to_offset,
                std::int64_t count, Host* host) {
    std::int64_t next_yield = kYieldEvery;
    ByteRange data;
    for (std::int64_t done = 0; done < count;) {
        const ByteRange rest{from_offset + done, from_offset + count};
        if (rest.begin >= data.end) {
            data = from.data_in(rest);
            const std::int64_t hole = end_of_hole(from, rest, data) - rest.begin;
            done += hole;
            if (hole != 0) {
                to.set_length(to_offset + done);
                continue;
            }
        }
        const std::int64_t to_border = kPiece - (to_offset + done) % kPiece;
        const auto wanted = static_cast<std::size_t>(std::min(to_border, data.end - rest.begin));
        const std::size_t copied = to.copy_from(from, rest.begin, to_offset + done, wanted);
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
