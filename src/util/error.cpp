#include <algorithm>
#include <iterator>
#include <string_view>

#include <brindle/error.h>
#include <brindle/text.h>

namespace brindle {
namespace {

struct RuntimeErrorText {
    RuntimeError number;
    std::u16string_view text;
};

constexpr RuntimeErrorText kRuntimeErrorTexts[] = {
    {RuntimeError::InvalidCall, u"Invalid procedure call or argument"},
    {RuntimeError::Overflow, u"Overflow"},
    {RuntimeError::OutOfMemory, u"Out of memory"},
    {RuntimeError::SubscriptOutOfRange, u"Subscript out of range"},
    {RuntimeError::DivisionByZero, u"Division by zero"},
    {RuntimeError::TypeMismatch, u"Type mismatch"},
    {RuntimeError::OutOfStringSpace, u"Out of string space"},
    {RuntimeError::FileNotFound, u"File not found"},
    {RuntimeError::DeviceInputOutput, u"Device I/O error"},
    {RuntimeError::FileAlreadyExists, u"File already exists"},
    {RuntimeError::DiskFull, u"Disk full"},
    {RuntimeError::InputPastEnd, u"Input past end of file"},
    {RuntimeError::TooManyFiles, u"Too many files"},
    {RuntimeError::PermissionDenied, u"Permission denied"},
    {RuntimeError::PathFileAccess, u"Path/File access error"},
    {RuntimeError::PathNotFound, u"Path not found"},
    {RuntimeError::ObjectNotSet, u"Object variable not set"},
    {RuntimeError::ValueNotFound, u"Value not found"},
    {RuntimeError::KeyAlreadyExists, u"Key already exists"},
};

String text_of(RuntimeError number) {
    const auto* const found =
        std::find_if(std::begin(kRuntimeErrorTexts), std::end(kRuntimeErrorTexts),
                     [number](const RuntimeErrorText& row) { return row.number == number; });
    return found == std::end(kRuntimeErrorTexts) ? String() : String(found->text);
}

}  // namespace

Error::Error(std::int32_t number, const String& description, const String& source)
    : content_(std::make_shared<const Content>(
          Content{number, description, source, to_utf8(description)})) {}

Error::Error(RuntimeError number, const String& source)
    : Error(static_cast<std::int32_t>(number), text_of(number), source) {}

Error Error::from(const String& source) const {
    return {number(), description(), source};
}

}  // namespace brindle
