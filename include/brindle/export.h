// Marks what a shared libbrindle shows to the programs that link it; all else in it is hidden.
#pragma once

// BRINDLE_SHARED comes with the CMake target and the pkg-config file of a shared library.
#if !defined(BRINDLE_SHARED)
#define BRINDLE_EXPORT
#elif !defined(_WIN32)
#define BRINDLE_EXPORT [[gnu::visibility("default")]]
#elif defined(BRINDLE_BUILDING)
#define BRINDLE_EXPORT __declspec(dllexport)
#else
#define BRINDLE_EXPORT __declspec(dllimport)
#endif
