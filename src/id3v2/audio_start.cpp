#include "id3v2/audio_start.h"

#include <algorithm>
#include <array>
#include <bitset>
#include <cstddef>
#include <limits>
#include <span>

#include "mpeg/frame_header.h"
#include "util/find_byte.h"

namespace brindle {

namespace {

// What frames that follow each other by chance seldom share.
constexpr std::uint32_t kKindMask = kVersionMask | kLayerMask | kFrequencyMask;

std::optional<FrameHeader> frame_at(FileWindow& file, std::int64_t position) {
    const auto bytes = file.view(position, kHeaderBytes);
    return bytes.size() < kHeaderBytes ? std::nullopt
                                       : parse_frame_header(header_bits(bytes.data()));
}

// Three headers in a row; the last frame need not be whole.
bool is_run_at(FileWindow& file, std::int64_t position) {
    constexpr int kFramesOfARun = 3;
    std::optional<FrameHeader> first;
    for (int frame = 0; frame < kFramesOfARun; ++frame) {
        const std::optional<FrameHeader> header = frame_at(file, position);
        first = first ? first : header;
        if (!header || ((header->bits ^ first->bits) & kKindMask) != 0) {
            return false;
        }
        position += header->length;
    }
    return true;
}

// The first position of [begin, end) at which such a run begins.
std::optional<std::int64_t> find_run(FileWindow& file, std::int64_t begin, std::int64_t end) {
    for (std::int64_t position = begin; position < end; ++position) {
        file.keep_from(position);
        const auto block = file.view_block(position, kHeaderBytes);
        if (block.size() < kHeaderBytes) {
            break;
        }
        const std::size_t sync = find_byte(block, kSyncByte);
        position += static_cast<std::int64_t>(sync);
        if (sync == block.size()) {
            --position;  // the next round begins behind the block
        } else if (position < end && is_run_at(file, position)) {
            return position;
        }
    }
    return std::nullopt;
}

// The places in a stretch at which a header can begin.
class SyncBytes {
public:
    explicit SyncBytes(std::span<const std::uint8_t> stretch) {
        for (std::size_t at = find_byte(stretch, kSyncByte); at < stretch.size();
             at += 1 + find_byte(stretch.subspan(at + 1), kSyncByte)) {
            places_[count_] = static_cast<std::uint16_t>(at);
            ++count_;
        }
    }
    [[nodiscard]] std::span<const std::uint16_t> places() const {
        return std::span(places_).first(count_);
    }

private:
    std::array<std::uint16_t, kLongestFrame> places_{};  // so many of them are filled:
    std::size_t count_ = 0;
};

// The earliest header from which a chain leads to `target`. A predecessor lies at most one longest
// frame before its successor, so the search goes back in such steps and ends with the first one
// that finds none.
std::int64_t find_chain_to(FileWindow& file, std::int64_t target) {
    // Of the positions behind, by their remainders: those from which a chain leads to the target.
    // Room for a stretch and the longest frame behind it.
    constexpr std::int64_t kSlots = 8'192;
    static_assert(kSlots >= std::int64_t{2} * (kLongestFrame + 1));
    std::bitset<kSlots> leads;
    const auto slot = [](std::int64_t position) {
        return static_cast<std::size_t>(position % kSlots);
    };
    leads.set(slot(target));
    std::int64_t earliest = target;
    for (std::int64_t end = target; end > 0 && earliest - end < kLongestFrame;) {
        const std::int64_t begin = std::max<std::int64_t>(end - kLongestFrame, 0);
        const auto length = static_cast<std::size_t>(end - begin);
        // Headers at the end of this stretch reach into the next one, and only whole ones count.
        constexpr std::size_t kReach = kHeaderBytes - 1;
        const auto bytes = file.view(begin, length + kReach);
        if (target - begin >= kSlots) {
            for (std::int64_t position = begin; position < end; ++position) {
                leads.reset(slot(position));
            }
        }
        const SyncBytes sync(bytes.first(bytes.size() - std::min(bytes.size(), kReach)));
        const auto places = sync.places();
        for (std::size_t left = places.size(); left != 0; --left) {
            const std::size_t place = places[left - 1];
            const std::int64_t position = begin + static_cast<std::int64_t>(place);
            const auto header = parse_frame_header(header_bits(bytes.data() + place));
            const std::int64_t next = position + (header ? header->length : 0);
            if (header && next <= target && leads.test(slot(next))) {
                leads.set(slot(position));
                earliest = position;
            }
        }
        end = begin;
    }
    return earliest;
}

}  // namespace

bool is_frame_at(FileWindow& file, std::int64_t position) {
    return frame_at(file, position).has_value();
}

std::optional<std::int64_t> find_audio_start(FileWindow& file, std::optional<std::int64_t> accepted,
                                             const ClaimedArea& claimed) {
    if (!accepted) {
        file.expect_until(file.length());
        accepted = find_run(file, 0, file.length());
        if (!accepted) {
            return std::nullopt;
        }
    }
    file.expect_until(*accepted + static_cast<std::int64_t>(kHeaderBytes));
    std::int64_t start = find_chain_to(file, *accepted);
    if (const auto run = find_run(file, 0, std::min(claimed.begin, start))) {
        start = *run;
    }
    if (claimed.end < start && is_frame_at(file, claimed.end)) {
        start = claimed.end;
    }
    if (const auto run = find_run(file, claimed.end, start)) {
        start = *run;
    }
    return start;
}

}  // namespace brindle
