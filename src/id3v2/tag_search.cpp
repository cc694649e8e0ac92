#include "id3v2/tag_search.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <limits>
#include <span>

#include "id3v2/tag_layout.h"

namespace brindle {

namespace {

constexpr std::size_t kSearchBlock = 4096;
// Blocks overlap, so that an identifier across their border is found.
constexpr std::size_t kSearchStep = kSearchBlock - std::size(kTagIdentifier);
constexpr std::uint8_t kAudioSync[] = {0xFF, 0xFB};  // MPEG-1 Layer III without CRC
constexpr std::size_t kNotFound = static_cast<std::size_t>(-1);

// A block is searched only if the file continues after it.
bool fills_block(const FileWindow& file, std::int64_t position) noexcept {
    return position + static_cast<std::int64_t>(kSearchBlock) + 1 < file.length();
}

// Whether the bytes begin at one of `count` positions from `from` on. Looks at all of them without
// a branch, which compilers turn into a few instructions for sixteen: what a search for the first
// byte costs depends on the file, and files of nothing but first bytes exist.
template <std::size_t kWanted>
bool has_bytes(const std::uint8_t* from, std::size_t count,
               const std::uint8_t (&wanted)[kWanted]) noexcept {
    std::uint8_t found = 0;
    for (std::size_t at = 0; at < count; ++at) {
        std::uint8_t equal = 1;
        for (std::size_t place = 0; place < kWanted; ++place) {
            equal &= static_cast<std::uint8_t>(from[at + place] == wanted[place]);
        }
        found |= equal;
    }
    return found != 0;
}

template <std::size_t kWanted>
std::size_t find_bytes(std::span<const std::uint8_t> in,
                       const std::uint8_t (&wanted)[kWanted]) noexcept {
    constexpr std::size_t kRange = 512;
    if (in.size() < kWanted) {
        return kNotFound;
    }
    if (std::equal(std::begin(wanted), std::end(wanted), in.begin())) {
        return 0;  // where the tag of nearly all files is
    }
    const std::size_t positions = in.size() - kWanted + 1;
    for (std::size_t begin = 0; begin < positions; begin += kRange) {
        const std::size_t count = std::min(kRange, positions - begin);
        if (has_bytes(in.data() + begin, count, wanted)) {
            const auto* const first = in.data() + begin;
            const auto* const at = std::search(first, first + count + kWanted - 1,
                                               std::begin(wanted), std::end(wanted));
            return static_cast<std::size_t>(at - in.data());
        }
    }
    return kNotFound;
}

}  // namespace

std::optional<std::int32_t> find_tag(FileWindow& file) {
    // A tag's own header must still be addressable in 32 bits.
    constexpr std::int64_t kLastPosition =
        std::numeric_limits<std::int32_t>::max() - 2 * static_cast<std::int64_t>(kSearchBlock);
    for (std::int64_t position = 0; fills_block(file, position) && position <= kLastPosition;
         position += static_cast<std::int64_t>(kSearchStep)) {
        if (position >= static_cast<std::int64_t>(FileWindow::kHeadBlock)) {
            file.expect_until(file.length());
        }
        // The version byte of an identifier at the very end lies one byte after the block.
        const auto seen = file.view(position, kSearchBlock + 1);
        const auto block = seen.first(std::min(seen.size(), kSearchBlock));
        const std::size_t tag = find_bytes(block, kTagIdentifier);
        if (tag != kNotFound) {
            if (tag + kVersionOffset < seen.size() &&
                is_known_version(seen[tag + kVersionOffset])) {
                return static_cast<std::int32_t>(position) + static_cast<std::int32_t>(tag);
            }
        } else if (find_bytes(block, kAudioSync) != kNotFound) {
            return std::nullopt;
        }
    }
    return std::nullopt;
}

bool is_tag_at(FileWindow& file, std::int64_t position) {
    if (!fills_block(file, position)) {
        return false;
    }
    constexpr std::size_t kUntilVersion = kVersionOffset + 1;
    std::array<std::uint8_t, kUntilVersion> start{};
    // After a tag at the front of a file the audio begins, which is read next anyway.
    if (!file.has_passed(position)) {
        const auto seen = file.view(position, start.size());
        std::copy(seen.begin(), seen.end(), start.begin());
    } else {
        file.copy(position, start);
    }
    return std::equal(std::begin(kTagIdentifier), std::end(kTagIdentifier), start.begin()) &&
           is_known_version(start[kVersionOffset]);
}

}  // namespace brindle
