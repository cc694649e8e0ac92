#pragma once

#include <cstdint>
#include <optional>

#include <gtest/gtest.h>

#include <brindle/error.h>

namespace brindle::test {

// The Error that a statement raises; nothing when it completes.
template <typename Statement>
std::optional<Error> raised_error(Statement&& statement) {
    try {
        statement();
        return std::nullopt;
    } catch (const Error& error) {
        return error;
    }
}

// Its number; 0 when the statement completes. Allocates nothing, so that memory may run out.
template <typename Statement>
std::int32_t error_number(Statement&& statement) {
    try {
        statement();
        return 0;
    } catch (const Error& error) {
        return error.number();
    }
}

// The Error of a statement that must raise one.
template <typename Statement>
Error required_error(Statement&& statement) {
    const std::optional<Error> error = raised_error(statement);
    EXPECT_TRUE(error) << "no error was raised";
    return error.value_or(Error(0, u""));
}

}  // namespace brindle::test
