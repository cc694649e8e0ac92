// The one exception type of the library, and the numbers it carries.
#pragma once

#include <cstdint>
#include <exception>
#include <memory>
#include <string>

#include <brindle/export.h>
#include <brindle/values.h>

namespace brindle {

// Run-time errors bear the automation runtime's classic numbers, which hosts test for.
enum class RuntimeError : std::int32_t {
    InvalidCall = 5,
    Overflow = 6,
    OutOfMemory = 7,
    SubscriptOutOfRange = 9,
    DivisionByZero = 11,
    TypeMismatch = 13,
    OutOfStringSpace = 14,
    FileNotFound = 53,
    DeviceInputOutput = 57,
    FileAlreadyExists = 58,
    DiskFull = 61,
    InputPastEnd = 62,
    TooManyFiles = 67,
    PermissionDenied = 70,
    PathFileAccess = 75,
    PathNotFound = 76,
    ObjectNotSet = 91,
    ValueNotFound = 455,
    KeyAlreadyExists = 457,
};

// What a failing member raises: a number, a sentence for people, and who raised it.
//
// Numbers 1 to 65535 are run-time errors (RuntimeError); every other number is a COM result code
// and reaches an automation host unchanged.
class BRINDLE_EXPORT Error : public std::exception {
public:
    Error(std::int32_t number, const String& description, const String& source = u"Brindle");
    // A run-time error with the text that belongs to its number.
    explicit Error(RuntimeError number, const String& source = u"Brindle");

    // Copying never throws, as an exception must not while it is on its way. No moves, so that no
    // Error is ever without its content.
    Error(const Error&) noexcept = default;
    Error& operator=(const Error&) noexcept = default;
    ~Error() override = default;

    [[nodiscard]] std::int32_t number() const noexcept { return content_->number; }
    [[nodiscard]] const String& description() const noexcept { return content_->description; }
    [[nodiscard]] const String& source() const noexcept { return content_->source; }
    // The description in UTF-8.
    [[nodiscard]] const char* what() const noexcept override { return content_->what.c_str(); }

    // The same error as raised by somebody else: only the source differs.
    [[nodiscard]] Error from(const String& source) const;

private:
    struct Content {
        std::int32_t number;
        String description;
        String source;
        std::string what;
    };

    std::shared_ptr<const Content> content_;
};

}  // namespace brindle
