// The header of an MPEG audio frame, of every layer: the library takes only what its hosts play.
//
//   AAAAAAAA AAABBCCD EEEEFFGH IIJJKLMM
//
//   A sync (all ones)   D no CRC follows       G padding      J mode extension
//   B version           E bit rate             H private      K, L copyright, original
//   C layer             F sampling frequency   I mode         M emphasis
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace brindle::host {

struct MpegFrame {
    static constexpr std::size_t kHeaderBytes = 4;
    // MPEG 2.5 Layer II at 160 kbit/s, 8000 Hz, padded.
    static constexpr std::int64_t kLongest = 2'881;

    std::uint32_t bits = 0;
    int version = 0;  // 1, 2, or 25 for MPEG 2.5
    int layer = 0;
    int kbps = 0;  // 0: free format, whose frame headers do not give the length
    int frequency = 0;
    std::int64_t length = 0;  // bytes, header and padding included; 0 in free format

    [[nodiscard]] bool is_free_format() const { return kbps == 0; }
    // Of the bytes of a frame, whose other fields are not looked at.
    [[nodiscard]] static bool lacks_crc(std::string_view bytes) {
        constexpr std::size_t kPlace = 1;
        constexpr unsigned kNoCrc = 1;
        return bytes.size() > kPlace && (static_cast<unsigned>(bytes[kPlace]) & kNoCrc) != 0;
    }
    [[nodiscard]] unsigned mode() const { return bits >> 6U & 3U; }
    [[nodiscard]] unsigned mode_extension() const { return bits >> 4U & 3U; }
    [[nodiscard]] int channels() const { return mode() == 3 ? 1 : 2; }
    [[nodiscard]] int samples() const;
    // `MPEG 1 Layer 3, 44100 Hz`
    [[nodiscard]] std::string text() const;
};

// Version, layer and sampling frequency are the same. A player cannot change them without a gap.
[[nodiscard]] bool is_same_kind(const MpegFrame& a, const MpegFrame& b);

// Of a frame's first four bytes; none if they are not a header.
[[nodiscard]] std::optional<MpegFrame> mpeg_frame_in(std::string_view bytes);

}  // namespace brindle::host
