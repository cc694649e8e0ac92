#include <new>
#include <stdexcept>
#include <string>
#include <type_traits>

#include <gtest/gtest.h>

#include <brindle/error.h>

#include "util/skip_errors.h"

namespace brindle {
namespace {

struct RuntimeErrorCase {
    RuntimeError error;
    std::int32_t number;
    const char* text;
};

TEST(Error, RuntimeErrorsHaveTheirClassicNumberAndText) {
    const RuntimeErrorCase cases[] = {
        {RuntimeError::InvalidCall, 5, "Invalid procedure call or argument"},
        {RuntimeError::Overflow, 6, "Overflow"},
        {RuntimeError::OutOfMemory, 7, "Out of memory"},
        {RuntimeError::SubscriptOutOfRange, 9, "Subscript out of range"},
        {RuntimeError::DivisionByZero, 11, "Division by zero"},
        {RuntimeError::TypeMismatch, 13, "Type mismatch"},
        {RuntimeError::OutOfStringSpace, 14, "Out of string space"},
        {RuntimeError::FileNotFound, 53, "File not found"},
        {RuntimeError::DeviceInputOutput, 57, "Device I/O error"},
        {RuntimeError::FileAlreadyExists, 58, "File already exists"},
        {RuntimeError::DiskFull, 61, "Disk full"},
        {RuntimeError::InputPastEnd, 62, "Input past end of file"},
        {RuntimeError::TooManyFiles, 67, "Too many files"},
        {RuntimeError::PermissionDenied, 70, "Permission denied"},
        {RuntimeError::PathFileAccess, 75, "Path/File access error"},
        {RuntimeError::PathNotFound, 76, "Path not found"},
        {RuntimeError::ObjectNotSet, 91, "Object variable not set"},
        {RuntimeError::ValueNotFound, 455, "Value not found"},
        {RuntimeError::KeyAlreadyExists, 457, "Key already exists"},
    };
    for (const RuntimeErrorCase& row : cases) {
        const Error error(row.error);
        EXPECT_EQ(error.number(), row.number);
        EXPECT_STREQ(error.what(), row.text);
        EXPECT_EQ(error.description(), String(row.text, row.text + std::string(row.text).size()));
        EXPECT_EQ(error.source(), u"Brindle");
    }
}

TEST(Error, CarriesWhatItWasGiven) {
    const Error error(-896556, u"FileName is Not set", u"Somebody");
    EXPECT_EQ(error.number(), -896556);
    EXPECT_EQ(error.description(), u"FileName is Not set");
    EXPECT_EQ(error.source(), u"Somebody");
}

TEST(Error, WhatIsTheDescriptionInUtf8) {
    EXPECT_STREQ(Error(1, u"Gr\u00F6\u00DFe").what(),
                 "Gr\xC3\xB6\xC3\x9F"
                 "e");
}

TEST(Error, FromChangesTheSourceOnly) {
    const Error original(RuntimeError::DiskFull);
    const Error raised = original.from(u"Brindle.Writer");
    EXPECT_EQ(raised.number(), 61);
    EXPECT_EQ(raised.description(), u"Disk full");
    EXPECT_STREQ(raised.what(), "Disk full");
    EXPECT_EQ(raised.source(), u"Brindle.Writer");
    EXPECT_EQ(original.source(), u"Brindle");
}

TEST(Error, CopyingNeverThrows) {
    static_assert(std::is_nothrow_copy_constructible_v<Error>);
    static_assert(std::is_nothrow_copy_assignable_v<Error>);
    const Error first(RuntimeError::Overflow);
    Error second(RuntimeError::DiskFull);
    second = first;
    EXPECT_EQ(second.number(), 6);
}

TEST(SkipErrors, TellsWhetherTheStatementCompleted) {
    EXPECT_TRUE(skip_errors([] {}));
    EXPECT_FALSE(skip_errors([] { throw Error(RuntimeError::Overflow); }));
    EXPECT_FALSE(skip_errors([] { throw std::bad_alloc(); }));
}

TEST(SkipErrors, LetsFaultsOfTheProgramThrough) {
    EXPECT_THROW(skip_errors([] { throw std::logic_error("a fault"); }), std::logic_error);
}

}  // namespace
}  // namespace brindle
