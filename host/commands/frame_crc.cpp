#include "commands/frame_crc.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "commands/mpeg_frame.h"

namespace brindle::host {

namespace {

constexpr std::size_t kCrcBytes = 2;
constexpr std::size_t kAfterCrc = MpegFrame::kHeaderBytes + kCrcBytes;
constexpr std::size_t kBitsPerByte = 8;

class Crc16 {
public:
    void add(unsigned bit) {
        constexpr unsigned kPolynomial = 0x8005;
        constexpr unsigned kTop = 0x8000;
        const bool is_set = ((value_ & kTop) != 0) != (bit != 0);
        value_ = (value_ << 1U & 0xFFFFU) ^ (is_set ? kPolynomial : 0);
    }
    [[nodiscard]] unsigned value() const { return value_; }

private:
    unsigned value_ = 0xFFFF;
};

// The bits of a frame that a checksum covers, in their order.
class ProtectedBits {
public:
    explicit ProtectedBits(std::string_view frame) : frame_(frame) {
        take((MpegFrame::kHeaderBytes - kFirstProtected) * kBitsPerByte);
        skip_crc();
    }

    unsigned take(std::size_t count) {
        unsigned number = 0;
        for (std::size_t i = 0; i < count; ++i, ++position_) {
            const std::size_t byte = position_ / kBitsPerByte;
            is_cut_ = is_cut_ || byte >= frame_.size();
            const unsigned bits = is_cut_ ? 0 : static_cast<std::uint8_t>(frame_[byte]);
            const unsigned bit = bits >> (kBitsPerByte - 1 - position_ % kBitsPerByte) & 1U;
            crc_.add(bit);
            number = number << 1U | bit;
        }
        return number;
    }
    [[nodiscard]] bool is_cut() const { return is_cut_; }
    [[nodiscard]] unsigned crc() const { return crc_.value(); }

private:
    void skip_crc() { position_ = kAfterCrc * kBitsPerByte; }

    static constexpr std::size_t kFirstProtected = 2;  // the sync is not

    std::string_view frame_;
    std::size_t position_ = kFirstProtected * kBitsPerByte;
    bool is_cut_ = false;
    Crc16 crc_;
};

std::size_t side_information_bytes(const MpegFrame& frame) {
    constexpr std::size_t kMono = 17;
    constexpr std::size_t kStereo = 32;
    constexpr std::size_t kMonoVersion2 = 9;
    constexpr std::size_t kStereoVersion2 = 17;
    if (frame.version == 1) {
        return frame.channels() == 1 ? kMono : kStereo;
    }
    return frame.channels() == 1 ? kMonoVersion2 : kStereoVersion2;
}

// Bits of each subband's allocation: tables B.2a to B.2d of 11172-3 and B.1 of 13818-3.
std::string_view allocation_bits(const MpegFrame& frame) {
    constexpr std::string_view kA = "444444444443333333333332222";
    constexpr std::string_view kB = "444444444443333333333332222222";
    constexpr std::string_view kC = "44333333";
    constexpr std::string_view kD = "443333333333";
    constexpr std::string_view kVersion2 = "444433333332222222222222222222";
    constexpr int kLowRate = 48;
    constexpr int kMiddleRate = 80;
    constexpr int k48 = 48'000;
    constexpr int k32 = 32'000;
    if (frame.version != 1) {
        return kVersion2;
    }
    const int kbps = frame.kbps / frame.channels();
    if (kbps <= kLowRate) {
        return frame.frequency == k32 ? kD : kC;
    }
    return frame.frequency == k48 || kbps <= kMiddleRate ? kA : kB;
}

void take_layer2(const MpegFrame& frame, ProtectedBits& bits) {
    constexpr unsigned kJointStereo = 1;
    constexpr std::size_t kSubbandsPerStep = 4;
    constexpr std::size_t kSelection = 2;  // bits
    const std::string_view widths = allocation_bits(frame);
    const auto channels = static_cast<std::size_t>(frame.channels());
    // From this subband on both channels share their allocation.
    const std::size_t bound =
        frame.mode() == kJointStereo
            ? std::min<std::size_t>((frame.mode_extension() + 1) * kSubbandsPerStep, widths.size())
            : widths.size();
    std::size_t selections = 0;
    for (std::size_t subband = 0; subband < widths.size(); ++subband) {
        const auto width = static_cast<std::size_t>(widths[subband] - '0');
        if (subband < bound) {
            for (std::size_t channel = 0; channel < channels; ++channel) {
                selections += bits.take(width) != 0 ? 1U : 0U;
            }
        } else {
            selections += bits.take(width) != 0 ? channels : 0U;
        }
    }
    bits.take(selections * kSelection);
}

}  // namespace

std::optional<bool> frame_crc_fits(std::string_view bytes) {
    const auto frame = mpeg_frame_in(bytes);
    if (!frame || frame->is_free_format() || frame->layer == 1 || bytes.size() < kAfterCrc) {
        return std::nullopt;
    }
    ProtectedBits bits(bytes);
    if (frame->layer == 3) {
        bits.take(side_information_bytes(*frame) * kBitsPerByte);
    } else {
        take_layer2(*frame, bits);
    }
    if (bits.is_cut()) {
        return std::nullopt;
    }
    const unsigned stored = static_cast<unsigned>(static_cast<std::uint8_t>(bytes[4])) << 8U |
                            static_cast<std::uint8_t>(bytes[5]);
    return bits.crc() == stored;
}

}  // namespace brindle::host
