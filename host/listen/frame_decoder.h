// From the frames of one stream to samples, each frame to exactly as many as its header gives: time
// continues after frames that can't be decoded.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "decode_fault.h"
#include "layer3_frame.h"
#include "stream_format.h"

struct mpg123_handle_struct;

namespace brindle::host {

class FrameDecoder {
public:
    // Channels are those of the first frame: later mono frames play on both channels of a stereo
    // stream, later stereo frames are mixed to mono. Raises std::bad_alloc.
    explicit FrameDecoder(const StreamFormat& format);

    struct Decoded {
        // Of all channels in turn; silence after a fault. Valid until the next call.
        std::span<const float> samples;
        std::optional<DecodeFault> fault;
    };
    // A whole frame with a valid header, of the same layer and frequency as the first.
    [[nodiscard]] Decoded decode(std::span<const std::uint8_t> frame);

    // Frames are missing before the next one.
    void lose_reservoir() { reservoir_ = 0; }

private:
    struct Deleter {
        void operator()(mpg123_handle_struct* handle) const;
    };

    [[nodiscard]] std::optional<DecodeFault> fault_in(
        const std::optional<Layer3Frame>& parts) const;
    void restart();
    [[nodiscard]] std::span<const float> run(std::span<const std::uint8_t> frame);

    StreamFormat format_;
    std::unique_ptr<mpg123_handle_struct, Deleter> handle_;
    std::size_t reservoir_ = 0;  // bytes before the next frame's own that it may use
    std::vector<float> silence_;
};

}  // namespace brindle::host
