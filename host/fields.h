// The table of fields: every value that a file has under a name. `show`, `set`, JSON and CSV follow
// it, and a test compares the shell completions and the manual with it. A new field is one row.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include <brindle/cMPEGHeader.h>

namespace brindle::host {

enum class FieldType {
    Text,
    Link,          // text in the code page of hosts
    Category,      // text; other programs also store numbers there
    Whole,         // a whole number
    Milliseconds,  // the same, a time
    Real,
    YesNo,
    FrameIds,     // a list; it has no getter
    FrameValues,  // lists by the ids; it has no getter
};

// What gets and sets a field.
struct FieldAccess {
    FieldType type = FieldType::Text;
    Variant (*get)(const cMPEGHeader& header) = nullptr;
    // Takes a String, a double, a bool, or for whole numbers an int32_t in the range below.
    void (*set)(cMPEGHeader& header, const Variant& value) = nullptr;
    std::int32_t least = 0;
    std::int32_t most = 0;
};

struct Field {
    // Among the keys: the member's number in the automation interface, if it has one.
    int place = 0;
    const char* key = nullptr;     // in JSON and CSV
    const char* option = nullptr;  // of `set`; nullptr for what cannot be set
    const char* label = nullptr;   // in `show` and in what `set` prints
    const char* help = nullptr;    // of the option
    // Where the value is in the ID3v2 tag: the frame's id in versions 2.3 and 2.2, or the name of
    // the user-defined text; "" where it is not.
    const char16_t* frame_id = u"";
    const char16_t* version2_id = u"";
    const char16_t* custom_name = u"";
    // Of the field in the ID3v1 record that is set along; nullptr for none.
    const char* record_option = nullptr;
    FieldAccess access;

    [[nodiscard]] bool is_custom() const { return custom_name[0] != u'\0'; }
    [[nodiscard]] bool is_in_record() const { return !is_custom() && frame_id[0] == u'\0'; }
};

// In the order in which `show` prints and `set` assigns them.
[[nodiscard]] std::span<const Field> all_fields();
// In the order of JSON and CSV.
[[nodiscard]] const std::vector<const Field*>& fields_by_place();

}  // namespace brindle::host
