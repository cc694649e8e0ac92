// Any four bytes: the two decoders and the formulas say the same of them.
#include "mpeg/frame_header.h"

#include <algorithm>

#include "fuzz/input.h"
#include "mpeg/frame_header_record.h"
#include "mpeg/header_formulas.h"

using brindle::fuzz::Input;
using brindle::fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    const std::uint32_t bits = input.number(4);
    const brindle::test::HeaderMeaning meaning = brindle::test::meaning_of(bits);

    const auto header = brindle::parse_frame_header(bits);
    require(header.has_value() == meaning.valid, "validity");
    if (header) {
        require(header->length == meaning.length, "length");
        require(header->bit_rate == meaning.kbps, "bit rate");
    }

    brindle::FrameHeaderRecord record;
    const auto bytes = brindle::test::big_endian(bits, brindle::kHeaderBytes);
    std::copy(bytes.begin(), bytes.end(), record.HeaderBytes.begin());
    require(brindle::DecodeFrameHeader(record, nullptr, {}) == meaning.valid, "validity by digits");
    if (meaning.valid) {
        require(record.MpegVersion == meaning.version, "version by digits");
        require(record.MpegLayer == meaning.layer, "layer by digits");
        require(record.BitRate == meaning.kbps, "bit rate by digits");
        require(record.SamplingFrequency == meaning.frequency, "frequency by digits");
        require(record.ChannelMode == meaning.mode, "channel mode by digits");
        require(record.Emphasis == meaning.emphasis, "emphasis by digits");
    }
    return 0;
}
