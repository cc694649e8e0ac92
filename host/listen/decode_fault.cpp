#include "decode_fault.h"

namespace brindle::host {

const char* reason_of(DecodeFault fault) {
    switch (fault) {
        case DecodeFault::MissingData:
            return "its data begins in frames that are missing";
        case DecodeFault::TooMuchData:
            return "it claims more data than there is";
        case DecodeFault::InvalidFields:
            return "its side information is not valid";
        case DecodeFault::Refused:
            break;
    }
    return "the decoder refuses it";
}

}  // namespace brindle::host
