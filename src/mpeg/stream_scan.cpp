#include "mpeg/stream_scan.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <new>
#include <utility>

#include "mpeg/duration.h"
#include "mpeg/full_scan.h"
#include "mpeg/header_search.h"
#include "mpeg/pacing.h"
#include "util/fixed_decimal.h"
#include "util/skip_errors.h"

namespace brindle {
namespace {

constexpr std::int32_t kShortestAcceptedRun = 10;
constexpr std::int32_t kMaxAttempts = 0x4000;
constexpr std::int32_t kRetryDistance = 10;
constexpr std::int64_t kId3v1Bytes = 128;
constexpr std::int64_t kLongestFile = std::numeric_limits<std::int32_t>::max();

constexpr double kPositionYieldSeconds = 0.4;
constexpr double kFailureYieldSeconds = 0.5;

// As many frames as the rest of the file seems to have after the first one, up to the limit.
std::int32_t confirmations_needed(std::int64_t remaining, std::int32_t frame_length) {
    const std::int64_t frames = divide_half_even(remaining, frame_length);
    if (frames >= kMaxConfirmations) {
        return kMaxConfirmations;
    }
    return frames == 0 ? 1 : static_cast<std::int32_t>(frames - 1);
}

}  // namespace

template <typename Step>
bool StreamScan::completes(Step&& step) {
    try {
        std::forward<Step>(step)();
        return true;
    } catch (const Error& error) {
        read_fault_ = error;
    } catch (const std::bad_alloc&) {
        read_fault_.emplace(RuntimeError::OutOfMemory);
    }
    return false;
}

bool StreamScan::ScanFile(std::int32_t StartOffset) {
    const std::int64_t start =
        StartOffset == kStartBehindTag ? tags_.audio_start() : std::int64_t{StartOffset};
    if (start < 0 || start > kLongestFile || window_.length() > kLongestFile) {
        return false;
    }
    bool accepted = false;
    return completes([&] { accepted = scan(static_cast<std::int32_t>(start), Attempt::First); }) &&
           accepted;
}

bool StreamScan::scan(std::int32_t start, Attempt attempt) {
    state_.xing = {};
    FrameChains chains(window_, clock_, host_);
    YieldTimer positions(clock_, window_);
    YieldTimer failures(clock_, window_);
    std::int32_t accepted_run = 0;
    std::int32_t last_count = 0;
    std::int32_t attempts = 0;
    bool rates_differ = false;
    std::int64_t position = is_in_second_half(start) ? 0 : start;

    while (accepted_run < kShortestAcceptedRun) {
        window_.keep_from(std::max<std::int64_t>(0, position - kRetryDistance));
        if (positions.at_least(kPositionYieldSeconds)) {
            yield_to(host_);
        }
        if (const auto header = header_at(position)) {
            const std::int64_t remaining = audio_bytes_from(position);
            if (remaining < 0) {
                return false;
            }
            const std::int32_t needed = confirmations_needed(remaining, header->length);
            const ChainOutcome chain = chains.follow(position, *header, needed);
            last_count = chain.count;
            rates_differ = rates_differ || chain.bit_rate_differs;
            if (chain.found) {
                keep(position, *header);
                state_.confirmed_header = header->bits;
                if (XingRecord xing = xing_header_of(position, *header); !xing.Tag.empty()) {
                    return finish_with_xing(std::move(xing));
                }
                accepted_run = needed;
                position += static_cast<std::int64_t>(kHeaderBytes);
                continue;
            }
        } else if (failures.at_least(kFailureYieldSeconds)) {
            yield_to(host_);
        }

        // A chain from directly after the tag came to the file's end too early: the tag may claim
        // ten bytes more than it has.
        if (last_count > 0 && attempt == Attempt::First && position >= kRetryDistance &&
            position == tags_.audio_start()) {
            chains.forget_all();
            return scan(static_cast<std::int32_t>(position) - kRetryDistance,
                        Attempt::TenBytesEarlier);
        }
        state_.frame_counter = 0;
        rates_differ = false;
        ++position;
        ++attempts;
        if (last_count == 0 || position > tags_.audio_start()) {
            const std::int32_t skipped = positions_without_header(position, attempts);
            position += skipped;
            attempts += skipped;
        }
        const bool given_up = attempts > kMaxAttempts && state_.header.BitRate == 0;
        if (given_up ||
            position + static_cast<std::int64_t>(kHeaderBytes) + 1 >= window_.length()) {
            break;
        }
    }

    if (accepted_run < kShortestAcceptedRun) {
        return false;
    }
    if (rates_differ) {
        chains.forget_all();
        // What fails there leaves the stream that was found here.
        completes([this] { average_all_frames(); });
    }
    return !state_.cancelled && finish_with_duration();
}

std::optional<FrameHeader> StreamScan::header_at(std::int64_t position) {
    const auto header = frame_at(window_, position, window_.length());
    if (!header) {
        return std::nullopt;
    }
    // What the usual file needs to be accepted, and no more of it.
    constexpr std::int64_t kFrames = kMaxConfirmations + 1;
    window_.expect_at_once(position + kFrames * header->length +
                           static_cast<std::int64_t>(kHeaderBytes));
    return header;
}

// How many positions from this one on can be passed over at once, as trying them would change
// nothing.
std::int32_t StreamScan::positions_without_header(std::int64_t position,
                                                  std::int32_t attempts) const {
    const std::int64_t last_tried = window_.length() - static_cast<std::int64_t>(kHeaderBytes) - 2;
    const std::int64_t most =
        std::min<std::int64_t>(kMaxAttempts - attempts, last_tried - position);
    const auto held = window_.held_from(position);
    if (most <= 0 || held.size() < kHeaderBytes) {
        return 0;
    }
    const std::size_t end =
        std::min(static_cast<std::size_t>(most), held.size() - kHeaderBytes + 1);
    const auto is_header = [&](std::size_t offset) {
        return parse_frame_header(header_bits(&held[offset])).has_value();
    };
    return static_cast<std::int32_t>(find_header(held, 0, end, is_header).value_or(end));
}

std::int64_t StreamScan::audio_bytes_from(std::int64_t position) const {
    return window_.length() - (tags_.has_id3v1 ? kId3v1Bytes : 0) - position;
}

bool StreamScan::is_in_second_half(std::int32_t position) const {
    return std::int64_t{position} * 2 > window_.length();
}

void StreamScan::keep(std::int64_t position, const FrameHeader& header) {
    if (state_.header.SamplingFrequency != 0) {
        return;
    }
    state_.header = record_of(header.bits, static_cast<std::int32_t>(position));
    state_.accepted_position = state_.header.HeaderStartPos;
}

XingRecord StreamScan::xing_header_of(std::int64_t position, const FrameHeader& header) {
    return ReadXing(window_.view(position, header.length).subspan(kHeaderBytes));
}

bool StreamScan::finish_with_xing(XingRecord xing) {
    const std::int32_t bytes = xing.Bytes;
    if (bytes > window_.length()) {
        xing.Tag.clear();
    }
    state_.xing = std::move(xing);
    state_.header.VBR = true;
    return skip_errors([&] { CalcDuration(state_, bytes); });
}

void StreamScan::average_all_frames() {
    state_.frame_counter = 0;
    std::int32_t& start = state_.header.HeaderStartPos;
    if (is_in_second_half(start)) {
        start = 0;
    }
    FullScan full_scan(name_, window_, clock_, host_);
    const auto stream = full_scan.run(start);
    state_.cancelled = state_.cancelled || full_scan.cancelled();
    if (stream) {
        state_.frame_counter = stream->frames;
        state_.header.VBR = true;
        state_.header.BitRate =
            checked_long(divide_half_even(stream->bit_rate_sum, stream->frames));
    }
}

bool StreamScan::finish_with_duration() {
    const std::int64_t audio_bytes = audio_bytes_from(state_.header.HeaderStartPos);
    return skip_errors([&] { CalcDuration(state_, checked_long(audio_bytes)); });
}

}  // namespace brindle
