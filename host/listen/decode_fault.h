// Why a frame can't be decoded.
#pragma once

namespace brindle::host {

enum class DecodeFault {
    MissingData,    // it begins in frames that are not there
    TooMuchData,    // more than the frame and the reservoir hold
    InvalidFields,  // of the side information
    Refused,        // by the decoder
};

// "its data begins in frames that are missing"
[[nodiscard]] const char* reason_of(DecodeFault fault);

}  // namespace brindle::host
