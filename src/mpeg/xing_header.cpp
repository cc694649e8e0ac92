#include "mpeg/xing_header.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <optional>
#include <string_view>

#include "util/big_endian.h"

namespace brindle {
namespace {

constexpr std::string_view kLetters = "XING";

// After the side information of MPEG-1 stereo, of MPEG-1 mono or MPEG-2 stereo, of MPEG-2 mono.
// Each of them is accepted in any frame.
constexpr std::array<std::size_t, 3> kPlaces = {32, 17, 9};

constexpr std::int32_t kHasFrames = 1;
constexpr std::int32_t kHasBytes = 2;
constexpr std::int32_t kHasBoth = kHasFrames | kHasBytes;

constexpr bool is_letter(std::uint8_t byte, char letter) {
    constexpr int kLowerCase = 'a' - 'A';
    const int upper_case = static_cast<std::uint8_t>(letter);
    return byte == upper_case || byte == upper_case + kLowerCase;
}

std::optional<std::size_t> find_letters(std::span<const std::uint8_t> data) {
    const auto found =
        std::search(data.begin(), data.end(), kLetters.begin(), kLetters.end(), is_letter);
    if (found == data.end()) {
        return std::nullopt;
    }
    return static_cast<std::size_t>(found - data.begin());
}

// The number at the front of `data`, which loses it; none when it is cut or too large.
std::optional<std::int32_t> take_number(std::span<const std::uint8_t>& data) {
    if (data.size() < sizeof(std::uint32_t)) {
        return std::nullopt;
    }
    const std::uint32_t number = big_endian<sizeof(std::uint32_t)>(data.data());
    data = data.subspan(sizeof(number));
    if (number > std::uint32_t{std::numeric_limits<std::int32_t>::max()}) {
        return std::nullopt;
    }
    return static_cast<std::int32_t>(number);
}

bool stands_at(std::span<const std::uint8_t> data, std::size_t place, std::string_view letters) {
    return data.size() >= place + letters.size() &&
           std::equal(letters.begin(), letters.end(),
                      data.begin() + static_cast<std::ptrdiff_t>(place),
                      [](char letter, std::uint8_t byte) { return is_letter(byte, letter); });
}

}  // namespace

XingRecord ReadXing(std::span<const std::uint8_t> frame_data) {
    // The first occurrence counts, so none after the last place can matter.
    constexpr std::size_t kSearched = kPlaces[0] + kLetters.size();
    const auto place = find_letters(frame_data.first(std::min(frame_data.size(), kSearched)));
    if (!place || std::find(kPlaces.begin(), kPlaces.end(), *place) == kPlaces.end()) {
        return {};
    }
    auto numbers = frame_data.subspan(*place + kLetters.size());
    const auto flags = take_number(numbers);
    if (!flags || (*flags & kHasBoth) != kHasBoth) {
        return {};
    }
    const auto frames = take_number(numbers);
    const auto bytes = take_number(numbers);
    if (!frames || !bytes) {
        return {};
    }
    return {u"XING", *flags, *frames, *bytes};
}

bool holds_vbr_header(std::span<const std::uint8_t> frame_data) {
    // The same header in a stream of constant bit rate.
    constexpr std::string_view kConstantRateLetters = "INFO";
    // Another encoder's, always 32 bytes after the frame header.
    constexpr std::string_view kOtherLetters = "VBRI";
    return stands_at(frame_data, kPlaces[0], kOtherLetters) ||
           std::any_of(kPlaces.begin(), kPlaces.end(), [&](std::size_t place) {
               return stands_at(frame_data, place, kLetters) ||
                      stands_at(frame_data, place, kConstantRateLetters);
           });
}

}  // namespace brindle
