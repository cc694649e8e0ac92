// The header that encoders write into the first frame instead of sound.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace brindle::host {

// "Xing", "Info" or "VBRI".
struct EncoderHeader {
    std::optional<std::int64_t> frames;  // of sound, where it counts them
    std::optional<std::int64_t> bytes;   // of the audio, where it counts them
};

// Of a frame's bytes from its own header on; none where there is no such header.
[[nodiscard]] std::optional<EncoderHeader> encoder_header_in(std::string_view frame);

}  // namespace brindle::host
