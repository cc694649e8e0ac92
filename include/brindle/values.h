// The value types of Brindle's interface.
#pragma once

#include <cstdint>
#include <string>
#include <variant>

namespace brindle {

// Counted UTF-16 text; embedded NULs are ordinary characters. File names are such strings too.
using String = std::u16string;

// The state of a Variant that holds nothing: what a host reads for a field that is not there.
struct Empty {
    friend bool operator==(Empty, Empty) = default;
};

// A value whose type the host chooses. Handed out as a number, a true Boolean is -1.
using Variant = std::variant<Empty, bool, std::int16_t, std::int32_t, double, String>;

// A user-defined text frame (TXXX).
struct CustomField {
    String name;
    String value;

    friend bool operator==(const CustomField&, const CustomField&) = default;
};

// How cMPEGHeader::ElapsedTimeFromMs lays out a time.
enum eTimeDisplayStyle : std::int32_t {
    NoFractions = 0,    // minutes:seconds
    OnlyFractions = 1,  // .fraction
    ShowAll = 2,        // minutes:seconds.fraction
};

// Which tags a file carries, or which of them to strip.
enum eTagType : std::int32_t {
    NoTags = 0,
    v1TagOnly = 1,
    v2TagOnly = 2,
    v1andv2TagsBothPresent = 3,
};

}  // namespace brindle
