#include "id3v2/cut_file.h"

#include <algorithm>
#include <cstddef>

#include <brindle/error.h>

#include "util/copy_bytes.h"

namespace brindle {

std::size_t CutFile::read_at(std::int64_t offset, std::span<std::uint8_t> into) {
    const auto before = static_cast<std::size_t>(
        std::clamp<std::int64_t>(cut_.begin - offset, 0, static_cast<std::int64_t>(into.size())));
    std::size_t done = before != 0 ? file_.read_at(offset, into.first(before)) : 0;
    if (done == before && done < into.size()) {
        const std::int64_t behind = offset + static_cast<std::int64_t>(done) + cut_.length();
        done += file_.read_at(behind, into.subspan(done));
    }
    return done;
}

void CutFile::write_at(std::int64_t /*offset*/, std::span<const std::uint8_t> /*bytes*/) {
    throw Error(RuntimeError::InvalidCall);
}

std::size_t CutFile::copy_from(BinaryFile& /*source*/, std::int64_t /*source_offset*/,
                               std::int64_t /*offset*/, std::size_t /*count*/) {
    throw Error(RuntimeError::InvalidCall);
}

void CutFile::set_length(std::int64_t /*length*/) {
    throw Error(RuntimeError::InvalidCall);
}

void CutFile::flush() {
    throw Error(RuntimeError::InvalidCall);
}

void CutFile::copy_to(BinaryFile& to, std::int64_t to_offset, std::int64_t offset, std::int64_t end,
                      Host* host) {
    const std::int64_t before = std::min(end, cut_.begin) - offset;
    if (before > 0) {
        copy_bytes(file_, offset, to, to_offset, before, host);
        to_offset += before;
        offset += before;
    }
    copy_bytes(file_, offset + cut_.length(), to, to_offset, end - offset, host);
}

}  // namespace brindle
