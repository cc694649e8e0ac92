// MPEG audio as tests need it: headers with chosen bits, frames and streams of frames.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "support/bytes.h"

namespace brindle::test {

// The 32 bits of a frame header, each field as stored in the file, so that invalid ones can be
// made too. The defaults: MPEG-1, Layer III, no CRC, 128 kbit/s, 44100 Hz, stereo.
struct HeaderBits {
    unsigned sync = 0x7FF;    // 11 bits
    unsigned version = 3;     // 2 bits: 0 is 2.5, 1 reserved, 2 is 2, 3 is 1
    unsigned layer = 1;       // 2 bits: 0 reserved, 1 is III, 2 is II, 3 is I
    unsigned protection = 1;  // 0: a CRC follows
    unsigned bitrate = 9;     // 4 bits, index
    unsigned frequency = 0;   // 2 bits, index
    unsigned padding = 0;
    unsigned private_bit = 0;
    unsigned mode = 0;       // 2 bits
    unsigned extension = 0;  // 2 bits
    unsigned copyright = 0;
    unsigned original = 0;
    unsigned emphasis = 0;  // 2 bits

    [[nodiscard]] Bytes bytes() const;
};

enum class Mode : unsigned { Stereo = 0, JointStereo = 1, DualChannel = 2, SingleChannel = 3 };

// One frame, said in the words of the field.
struct Frame {
    int version = 1;  // 1, 2 or 25
    int layer = 3;
    int kbps = 128;
    int frequency = 44100;
    Mode mode = Mode::Stereo;
    bool padding = false;
    bool crc = false;
    bool copyright = false;
    bool original = false;
    unsigned emphasis = 0;
    // The size of the frame in the stream where it is not the one that its header tells.
    std::optional<std::size_t> bytes_in_stream = std::nullopt;

    [[nodiscard]] HeaderBits bits() const;
    // By the public formula: a Layer I slot has four bytes.
    [[nodiscard]] std::size_t length() const;
    // As Brindle counts: a padded Layer I frame is two slots longer, not one.
    [[nodiscard]] std::size_t length_as_read() const;
    [[nodiscard]] std::size_t samples() const;
    // Header and a body without any sync, tag or "XING". `number` makes bodies differ.
    [[nodiscard]] Bytes bytes(std::size_t number = 0) const;

    [[nodiscard]] Frame with_kbps(int other) const {
        Frame changed = *this;
        changed.kbps = other;
        return changed;
    }
    [[nodiscard]] Frame with_mode(Mode other) const {
        Frame changed = *this;
        changed.mode = other;
        return changed;
    }
    [[nodiscard]] Frame padded() const {
        Frame changed = *this;
        changed.padding = true;
        return changed;
    }
};

// `count` such frames, one right after the other.
[[nodiscard]] Bytes stream(const Frame& frame, std::size_t count);
// One frame for each bitrate, equal in everything else.
[[nodiscard]] Bytes variable_stream(const Frame& frame, const std::vector<int>& kbps);

// Where encoders put a VBR header, as an offset from the first byte of the frame.
inline constexpr std::size_t kXingStereo1 = 36;
inline constexpr std::size_t kXingMono1 = 21;  // and MPEG-2 stereo
inline constexpr std::size_t kXingMono2 = 13;

struct Xing {
    std::uint32_t frames = 0;
    std::uint32_t bytes = 0;
    std::uint32_t flags = 3;  // 1: frames, 2: bytes
    std::string_view letters = "Xing";
    std::size_t offset = kXingStereo1;
};

// A frame of silence that carries a VBR header. Fields follow each other whatever the
// flags say.
[[nodiscard]] Bytes xing_frame(const Frame& frame, const Xing& xing);

}  // namespace brindle::test
