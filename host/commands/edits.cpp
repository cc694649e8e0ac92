#include "commands/edits.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <string_view>
#include <system_error>
#include <utility>

#include <brindle/text.h>

#include "fields.h"
#include "output/json_values.h"
#include "output/printable_text.h"
#include "output/stream_text.h"

namespace brindle::host {

namespace {

// Frames of more bytes are not read back by hosts.
constexpr std::size_t kLargestBody = 5000;
constexpr std::size_t kEncodingByte = 1;
constexpr std::size_t kLanguage = 3;

const String kCustomFrame = u"TXXX";
const String kVersion2CustomFrame = u"TXX";

struct GivenText {
    std::string text;
    bool unicode = false;
};

// On Windows, hosts use the system's code page; elsewhere this one.
constexpr std::string_view kCodePage = "Windows-1252";

[[noreturn]] void refuse(const std::string& option, const std::string& why) {
    throw UsageError(option + ": " + why);
}

// --- Values from the command line.

// The contents of a frame other than a text.
struct Surroundings {
    std::size_t bytes = 0;
    std::size_t characters = 0;  // in the text's encoding
    std::size_t strings = 1;     // with the text's own
};

std::size_t longest_text(const Surroundings& around, bool is_unicode) {
    constexpr std::size_t kMark = 2;
    constexpr std::size_t kUnit = 2;
    const std::size_t room = kLargestBody - kEncodingByte - around.bytes;
    const std::size_t characters = is_unicode ? (room - around.strings * kMark) / kUnit : room;
    return characters - std::min(characters, around.characters);
}

bool is_utf8(const String& text) {
    constexpr char16_t kFirstStrayByte = 0xDC80;
    constexpr char16_t kLastStrayByte = 0xDCFF;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool is_pair = i > 0 && text[i - 1] >= 0xD800 && text[i - 1] < 0xDC00;
        if (text[i] >= kFirstStrayByte && text[i] <= kLastStrayByte && !is_pair) {
            return false;
        }
    }
    return true;
}

String checked_text(const std::string& option, const GivenText& given,
                    const Surroundings& around = {}) {
    String text = from_utf8(given.text);
    if (!is_utf8(text)) {
        refuse(option, "the text is not UTF-8");
    }
    const bool needs_unicode = !fits_code_page(text);
    if (needs_unicode && !given.unicode) {
        refuse(option, "hosts read text of " + std::string(kCodePage) +
                           ", which does not contain " + in_quotes(text) +
                           "; --unicode writes it anyway");
    }
    const std::size_t longest = longest_text(around, needs_unicode);
    if (text.size() > longest) {
        refuse(option, "the text has " + std::to_string(text.size()) + " characters; more than " +
                           std::to_string(longest) + " could not be read back");
    }
    return text;
}

std::int32_t checked_whole(const Field& field, const std::string& given) {
    std::string_view digits = given;
    if (digits.size() > 1 && digits[0] == '+' && digits[1] != '-') {
        digits.remove_prefix(1);
    }
    std::int32_t number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (error == std::errc::invalid_argument || end != digits.data() + digits.size()) {
        refuse(field.option, "'" + given + "' is not a whole number");
    }
    if (error != std::errc() || number < field.access.least || number > field.access.most) {
        refuse(field.option, given + " is not in the range of " +
                                 std::to_string(field.access.least) + " to " +
                                 std::to_string(field.access.most));
    }
    return number;
}

double checked_real(const Field& field, const std::string& given) {
    constexpr const char* kCharacters = "+-.0123456789eE";
    char* end = nullptr;
    const double number = std::strtod(given.c_str(), &end);
    if (given.empty() || given.find_first_not_of(kCharacters) != std::string::npos ||
        end != given.c_str() + given.size()) {
        refuse(field.option, "'" + given + "' is not a number");
    }
    if (!std::isfinite(number)) {
        refuse(field.option, given + " is too large");
    }
    return number;
}

// The contents of the field's frame other than its text.
Surroundings around(const Field& field) {
    if (field.is_custom()) {
        const std::u16string_view name = field.custom_name;
        return {.characters = name.size() + 1, .strings = 2};
    }
    if (field.frame_id == std::u16string_view(u"COMM")) {
        // An empty description has a terminator.
        return {.bytes = kLanguage, .characters = 1, .strings = 2};
    }
    return {};
}

Variant checked_value(const Field& field, const GivenText& given) {
    switch (field.access.type) {
        case FieldType::Whole:
        case FieldType::Milliseconds:
            return checked_whole(field, given.text);
        case FieldType::Real:
            return checked_real(field, given.text);
        case FieldType::Link:
            return checked_text(field.option, {given.text, false});
        default:
            return checked_text(field.option, given, around(field));
    }
}

// --- Fields

const char* placeholder(FieldType type) {
    switch (type) {
        case FieldType::Whole:
            return "N";
        case FieldType::Milliseconds:
            return "MS";
        case FieldType::Real:
            return "X";
        default:
            return "TEXT";
    }
}

std::string text_of(const Field& field, const cMPEGHeader& header) {
    const Variant value = field.access.get(header);
    const auto* text = std::get_if<String>(&value);
    switch (field.access.type) {
        case FieldType::Text:
        case FieldType::Link:
            return in_quotes(*text);
        case FieldType::Whole:
            return text != nullptr ? printable(*text) : json_text(value);
        case FieldType::YesNo:
            return std::get<std::int32_t>(value) != 0 ? "yes" : "no";
        default:
            return json_text(value);
    }
}

ShownValue shown(const Field& field) {
    return {field.label, [&field](const cMPEGHeader& header) { return text_of(field, header); }};
}

const Field& field_of(std::string_view option) {
    const auto fields = all_fields();
    return *std::find_if(fields.begin(), fields.end(), [&](const Field& field) {
        return field.option != nullptr && field.option == option;
    });
}

Edit edit_of(const Field& field, const Variant& value) {
    Edit edit;
    edit.shown = shown(field);
    if (field.record_option != nullptr) {
        edit.shown_in_record = shown(field_of(field.record_option));
    }
    edit.assign = [&field, value](cMPEGHeader& header) { field.access.set(header, value); };
    edit.frame_id = field.is_custom() ? kCustomFrame : field.frame_id;
    edit.version2_id = field.is_custom() ? kVersion2CustomFrame : field.version2_id;
    edit.field_name = field.custom_name;
    return edit;
}

ShownValue shown_custom_field(const String& name) {
    return {"Field " + in_quotes(name), [name](const cMPEGHeader& header) {
                return header.CustomFieldExists(name) ? json_text(header.CustomFieldRetrieve(name))
                                                      : std::string("null");
            }};
}

Edit custom_field(const std::string& given_name, const GivenText& given) {
    const std::string option = "--field";
    if (given_name.empty()) {
        refuse(option, "the field has no name");
    }
    // Name and value share one frame, and one encoding.
    static_cast<void>(
        checked_text(option, {given_name + "=" + given.text, given.unicode}, {.strings = 2}));
    const String name = from_utf8(given_name);
    const String value = from_utf8(given.text);
    Edit edit;
    edit.shown = shown_custom_field(name);
    edit.assign = [name, value](cMPEGHeader& header) {
        header.CustomFieldAdd(name, Variant(value));
    };
    edit.frame_id = kCustomFrame;
    edit.version2_id = kVersion2CustomFrame;
    edit.field_name = name;
    return edit;
}

// NAME=VALUE
Edit custom_field(const GivenText& given) {
    const std::size_t equals = given.text.find('=');
    if (equals == std::string::npos) {
        refuse("--field", "'" + given.text + "' is not of the form NAME=VALUE");
    }
    return custom_field(given.text.substr(0, equals),
                        {given.text.substr(equals + 1), given.unicode});
}

// Clears a field of the ID3v1 record, if there is one.
void empty_record_field(const Field& field, cMPEGHeader& header) {
    if (has_id3v1(header)) {
        field.access.set(header, field.access.type == FieldType::Text ? Variant(String())
                                                                      : Variant(std::int32_t{0}));
    }
}

Edit removal_of(const Field& field) {
    Edit edit = edit_of(field, Variant());
    const Field* in_record = field.record_option != nullptr ? &field_of(field.record_option)
                             : field.is_in_record()         ? &field
                                                            : nullptr;
    edit.assign = [in_record, &field](cMPEGHeader& header) {
        const bool is_joined = !field.is_in_record() && !header.Writev1v2Separate();
        if (in_record != nullptr && (field.is_in_record() || is_joined)) {
            empty_record_field(*in_record, header);
        }
    };
    edit.removes = true;
    return edit;
}

Edit removal_of_custom_field(const String& name) {
    Edit edit;
    edit.shown = shown_custom_field(name);
    edit.assign = [](cMPEGHeader&) {};
    edit.frame_id = kCustomFrame;
    edit.version2_id = kVersion2CustomFrame;
    edit.field_name = name;
    edit.removes = true;
    return edit;
}

// The values that `scan` prints, and those that people write.
bool checked_yes_or_no(const Field& field, const std::string& given) {
    for (const char* yes : {"1", "-1", "yes", "true", "TRUE"}) {
        if (given == yes) {
            return true;
        }
    }
    for (const char* no : {"0", "no", "false", "FALSE"}) {
        if (given == no) {
            return false;
        }
    }
    refuse(field.option, "'" + given + "' is neither yes nor no");
}

bool is_same_field(const Edit& one, const Edit& other) {
    return one.shown.label == other.shown.label;
}

// `--no-opener`
std::string opposite(const Field& field) {
    return "--no-" + std::string(field.option).substr(2);
}

}  // namespace

Edit removal_of(const std::string& name) {
    constexpr std::string_view kCustomPrefix = "field:";
    if (name.starts_with(kCustomPrefix) && name.size() > kCustomPrefix.size()) {
        return removal_of_custom_field(from_utf8(name.substr(kCustomPrefix.size())));
    }
    for (const Field& field : all_fields()) {
        if (field.option != nullptr && "--" + name == field.option) {
            return removal_of(field);
        }
    }
    refuse("--remove", "unknown field '" + name + "'");
}

Edit edit_for(const Field& field, const std::string& text, bool unicode) {
    if (field.access.type == FieldType::YesNo) {
        return edit_of(field, checked_yes_or_no(field, text));
    }
    return edit_of(field, checked_value(field, {text, unicode}));
}

Edit edit_for_custom_field(const std::string& name, const std::string& text, bool unicode) {
    return custom_field(name, {text, unicode});
}

void EditOptions::add_to(CommandOptions& command) {
    for (const Field& field : all_fields()) {
        if (field.option == nullptr) {
            continue;
        }
        if (field.access.type == FieldType::YesNo) {
            command.flag(field.option, flags_[field.option], field.help);
            command.flag(opposite(field), flags_[opposite(field)], "The file is not an opener");
            command.exclusive(field.option, opposite(field));
            continue;
        }
        command.text(
            field.option, placeholder(field.access.type),
            [this, &field](const std::string& value) { values_[field.option] = value; },
            field.help);
    }
    command.texts("--field", "NAME=VALUE", custom_fields_,
                  "Custom field; may be given several times");
    command.texts("--remove", "NAME", removed_,
                  "Remove a field: the name of its option, such as cue-in, or field:NAME; may be "
                  "given several times");
}

std::vector<Edit> EditOptions::edits(bool unicode) const {
    std::vector<Edit> edits;
    for (const Field& field : all_fields()) {
        if (field.option == nullptr) {
            continue;
        }
        if (field.access.type == FieldType::YesNo) {
            const bool is_set = flags_.at(field.option);
            if (is_set || flags_.at(opposite(field))) {
                edits.push_back(edit_of(field, is_set));
            }
        } else if (const auto value = values_.find(field.option); value != values_.end()) {
            edits.push_back(edit_of(field, checked_value(field, {value->second, unicode})));
        }
    }
    for (const std::string& field : custom_fields_) {
        edits.push_back(custom_field({field, unicode}));
    }
    const std::size_t set_count = edits.size();
    for (const std::string& name : removed_) {
        edits.push_back(removal_of(name));
        const Edit& last = edits.back();
        if (std::any_of(edits.begin(), edits.begin() + static_cast<std::ptrdiff_t>(set_count),
                        [&](const Edit& edit) { return is_same_field(edit, last); })) {
            refuse("--remove", "'" + name + "' is also set");
        }
    }
    return edits;
}

std::vector<ShownValue> values_changed_by(const std::vector<Edit>& edits, bool separate) {
    std::vector<ShownValue> values;
    const auto add = [&](ShownValue value) {
        const bool is_known = std::any_of(values.begin(), values.end(), [&](const ShownValue& v) {
            return v.label == value.label;
        });
        if (!is_known) {
            values.push_back(std::move(value));
        }
    };
    for (const Edit& edit : edits) {
        add(edit.shown);
        if (edit.shown_in_record && !separate) {
            add(*edit.shown_in_record);
        }
    }
    return values;
}

}  // namespace brindle::host
