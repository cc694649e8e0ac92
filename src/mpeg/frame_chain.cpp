#include "mpeg/frame_chain.h"

#include <algorithm>
#include <cstddef>

#include "mpeg/header_search.h"

namespace brindle {
namespace {

constexpr double kYieldSeconds = 1.0;

// The longest way from a first frame to the last that confirms it has room, and no more: this is
// the largest piece of memory in reading.
constexpr std::uint32_t kRing = std::uint32_t{kMaxConfirmations} * kLongestFrame + 1;

// An entry of the ring: 0 when unknown, else the links and one, and the reason of the break.
constexpr std::uint8_t kUnknown = 0;
constexpr std::uint8_t kFileEndFlag = 0x80;
constexpr std::uint8_t kLinksMask = 0x7F;
static_assert(kMaxConfirmations <= kLinksMask);

// In a file shorter than the ring this is the position, and a ring as long as the file is enough.
constexpr std::size_t slot(std::int64_t position) {
    return static_cast<std::uint32_t>(position) % kRing;  // no file of audio has 2^32 bytes
}

}  // namespace

ChainOutcome FrameChains::follow(std::int64_t position, const FrameHeader& first,
                                 std::int32_t needed) {
    forget_before(position);
    Followers followers;  // the first `count` of them
    std::int32_t count = 0;
    bool bit_rate_differs = false;
    Tail tail{0, Break::Invalid};
    std::int64_t length = first.length;
    std::int64_t next = position;
    const std::int64_t file_length = window_.length();

    while (count < needed) {
        next += length;
        if (count != 0 && reaches_file_end(next)) {
            tail.reason = Break::FileEnd;
            break;
        }
        const auto header = frame_at(window_, next, file_length);
        if (yield_timer_.longer_than(kYieldSeconds)) {
            yield_to(host_);
        }
        if (!header || !headers_agree(first.bits, header->bits)) {
            break;
        }
        length = header->length;
        followers[static_cast<std::size_t>(count)] = next;
        ++count;
        if (knows(next)) {
            // Nearer to the file's end fewer frames are needed, so a chain that failed can serve.
            tail = recall(next);
            if (count + tail.links < needed) {
                break;
            }
        }
        if (header->bit_rate != first.bit_rate && !bit_rate_differs) {
            bit_rate_differs = true;
            window_.expect_at_once(next + (needed - count + 1) * length);
        }
        if (tails_.empty()) {
            Run run{next, static_cast<std::uint32_t>(length), count};
            run_through_window(first, needed, run, followers);
            next = run.position;
            length = run.length;
            count = run.count;
        }
    }

    if (count == needed) {
        return {true, needed, bit_rate_differs};
    }
    const std::int32_t links = count + tail.links;
    for (std::int32_t index = 0; index < count; ++index) {
        remember(followers[static_cast<std::size_t>(index)], {links - index - 1, tail.reason});
    }
    return {false, tail.reason == Break::FileEnd ? links : 0, false};
}

// Follows the chain as far as it has the usual form: whole frames of the first one's bit rate
// which the window holds.
void FrameChains::run_through_window(const FrameHeader& first, std::int32_t needed, Run& run,
                                     Followers& followers) const {
    const auto held = window_.held_from(run.position);
    // A header that ends where the file does is no longer followed.
    const auto left = static_cast<std::size_t>(window_.length() - run.position);
    const std::size_t end = std::min(held.size(), left - 1);
    const FrameShape shape = frame_shape(first.bits);
    std::uint32_t bits = header_bits(held.data());
    std::size_t offset = 0;
    while (run.count < needed && offset + run.length + kHeaderBytes <= end) {
        const std::uint32_t next_bits = header_bits(held.data() + offset + run.length);
        std::uint32_t next_length = run.length;
        // Most headers have the length of the one before. Taking that for granted, a processor goes
        // on to the next header before this one has come from memory.
        if (((next_bits ^ bits) & (kStreamMask | kBitRateMask | kPaddingMask)) != 0) {
            if (((next_bits ^ first.bits) & (kStreamMask | kBitRateMask)) != 0) {
                break;
            }
            bits = next_bits;
            next_length = shape.length_of(bits);
        }
        if (offset + run.length + next_length > left) {
            break;
        }
        offset += run.length;
        run.length = next_length;
        followers[static_cast<std::size_t>(run.count)] =
            run.position + static_cast<std::int64_t>(offset);
        ++run.count;
    }
    run.position += static_cast<std::int64_t>(offset);
}

bool FrameChains::reaches_file_end(std::int64_t position) const {
    // One byte more than a header: a chain ends there even if a header would just fit.
    return position + static_cast<std::int64_t>(kHeaderBytes) + 1 > window_.length();
}

void FrameChains::forget_before(std::int64_t position) {
    if (!tails_.empty()) {
        for (; forgotten_before_ < position; ++forgotten_before_) {
            tails_[slot(forgotten_before_)] = kUnknown;
        }
    }
    forgotten_before_ = position;
}

bool FrameChains::knows(std::int64_t position) const {
    return !tails_.empty() && tails_[slot(position)] != kUnknown;
}

FrameChains::Tail FrameChains::recall(std::int64_t position) const {
    const std::uint8_t entry = tails_[slot(position)];
    return {(entry & kLinksMask) - 1,
            (entry & kFileEndFlag) != 0 ? Break::FileEnd : Break::Invalid};
}

void FrameChains::remember(std::int64_t position, const Tail& tail) {
    if (tails_.empty()) {
        const std::int64_t places = std::min<std::int64_t>(kRing, window_.length());
        tails_ = std::vector<std::uint8_t>(static_cast<std::size_t>(places), kUnknown);
    }
    tails_[slot(position)] = static_cast<std::uint8_t>(
        (tail.links + 1) | (tail.reason == Break::FileEnd ? kFileEndFlag : 0));
}

}  // namespace brindle
