// Any four bytes: what the walks read of a header and its record are what the formulas say.
#include "mpeg/frame_header.h"

#include <algorithm>

#include "fuzz/input.h"
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
    require(brindle::DecodeFrameHeader(record) == meaning.valid, "validity in the record");
    if (meaning.valid) {
        require(record.MpegVersion == meaning.version, "version in the record");
        require(record.MpegLayer == meaning.layer, "layer in the record");
        require(record.BitRate == meaning.kbps, "bit rate in the record");
        require(record.SamplingFrequency == meaning.frequency, "frequency in the record");
        require(record.ChannelMode == meaning.mode, "channel mode in the record");
        require(record.Emphasis == meaning.emphasis, "emphasis in the record");
    }
    return 0;
}
