#include "mpeg/audio_start.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>
#include <vector>

#include "mpeg/header_search.h"

namespace brindle {

namespace {

// How long the frame of a header may be. The analyser counts the padding of Layer I as two slots,
// encoders write one.
struct FrameLengths {
    std::array<std::int32_t, 2> values{};
    std::size_t count = 0;
};

FrameLengths lengths_of(std::uint32_t bits) {
    constexpr std::int32_t kSlot = 4;
    const std::optional<FrameHeader> header = parse_frame_header(bits);
    if (!header) {
        return {};
    }
    const bool is_padded_layer1 = (bits & kLayerMask) == kLayer1 && (bits & kPaddingMask) != 0;
    return {{header->length, header->length - kSlot}, is_padded_layer1 ? 2U : 1U};
}

// Whether `headers` more headers of that kind follow each other from `position` on. The last frame
// need not be whole.
bool is_run_at(FileWindow& file, std::int64_t position, FrameKind kind, int headers) {
    const std::uint32_t bits = header_bits_at(file, position);
    const FrameLengths lengths = lengths_of(bits);
    if (lengths.count == 0 || kind_of(bits) != kind) {
        return false;
    }
    if (headers == 1) {
        return true;
    }
    return std::any_of(
        lengths.values.begin(), lengths.values.begin() + static_cast<std::ptrdiff_t>(lengths.count),
        [&](std::int32_t length) { return is_run_at(file, position + length, kind, headers - 1); });
}

// Frames of free format tell nothing of their length, but all of a stream have the same, give or
// take a slot: whether the next one after `position` ends where `length` says.
bool goes_on_so(FileWindow& file, std::int64_t position, std::int64_t length, std::uint32_t bits) {
    constexpr std::int64_t kSlot = 4;
    for (std::int64_t next = position + length - kSlot; next <= position + length + kSlot; ++next) {
        if (const std::uint32_t found = header_bits_at(file, next);
            is_header_of_any_rate(found) && kind_of(found) == kind_of(bits)) {
            return true;
        }
    }
    return false;
}

bool may_begin_audio(FileWindow& file, std::int64_t position,
                     const std::optional<StreamKinds>& accepted) {
    constexpr int kHeadersOfARun = 3;
    const std::uint32_t bits = header_bits_at(file, position);
    if (!is_header_of_any_rate(bits)) {
        return false;
    }
    return !accepted || accepted->contain(kind_of(bits)) ||
           is_run_at(file, position, kind_of(bits), kHeadersOfARun);
}

}  // namespace

std::optional<FrameKind> frame_kind_at(FileWindow& file, std::int64_t position) {
    const std::uint32_t bits = header_bits_at(file, position);
    return parse_frame_header(bits) ? std::optional(kind_of(bits)) : std::nullopt;
}

bool is_any_header_at(FileWindow& file, std::int64_t position) {
    return is_header_of_any_rate(header_bits_at(file, position));
}

bool holds_header(std::span<const std::uint8_t> bytes) {
    return find_header(bytes,
                       [&](std::size_t at) {
                           return is_header_of_any_rate(header_bits(bytes.data() + at));
                       })
        .has_value();
}

std::optional<std::int64_t> find_audio(FileWindow& file, const ByteRange& range,
                                       const std::optional<StreamKinds>& accepted) {
    return find_header(file, range, [&](std::int64_t position) {
        return may_begin_audio(file, position, accepted);
    });
}

bool frame_ends_at(FileWindow& file, std::int64_t begin, std::int64_t position) {
    const std::uint32_t next = header_bits_at(file, position);
    const bool has_next = is_header_of_any_rate(next);
    const bool is_free_format = has_next && !parse_frame_header(next);
    const std::int64_t earliest = std::max(begin, position - kLongestFrame);
    file.keep_from(earliest);
    const auto last = file.view(earliest, static_cast<std::size_t>(position - earliest));
    const std::vector<std::uint8_t> bytes(last.begin(), last.end());  // the window moves on
    const auto ends_at_position = [&](std::size_t at) {
        const std::uint32_t bits = header_bits(bytes.data() + at);
        if (!is_header_of_any_rate(bits) || (has_next && kind_of(bits) != kind_of(next))) {
            return false;
        }
        const std::size_t length = bytes.size() - at;
        if (is_free_format && (bits & kBitRateMask) == 0 &&
            goes_on_so(file, position, static_cast<std::int64_t>(length), bits)) {
            return true;
        }
        const FrameLengths lengths = lengths_of(bits);
        return std::any_of(
            lengths.values.begin(),
            lengths.values.begin() + static_cast<std::ptrdiff_t>(lengths.count),
            [length](std::int32_t possible) { return std::cmp_equal(possible, length); });
    };
    return find_header(bytes, ends_at_position).has_value();
}

}  // namespace brindle
