// Debian has the library that checks properties for its own machines only: on Windows a property is
// compiled as far as it can be without, and never run.
#pragma once

#include <rapidcheck.h>

#include <gtest/gtest.h>

#define RC_GTEST_PROP(Suite, Name, Arguments) \
    template <typename>                       \
    [[maybe_unused]] static void Suite##_##Name Arguments

#define RC_GTEST_FIXTURE_PROP(Fixture, Name, Arguments) \
    template <typename>                                 \
    struct Fixture##_##Name : Fixture {                 \
        void property Arguments;                        \
    };                                                  \
    template <typename Unused>                          \
    void Fixture##_##Name<Unused>::property Arguments
