# 32-bit Windows as clang reads it, for clang-tidy: nothing is linked.
set(BRINDLE_TARGET i686-w64-mingw32)
set(CMAKE_SYSTEM_PROCESSOR i686)
include(${CMAKE_CURRENT_LIST_DIR}/mingw.cmake)

# With the standard library of the other compiler.
execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=include
    OUTPUT_VARIABLE headers
    OUTPUT_STRIP_TRAILING_WHITESPACE
    COMMAND_ERROR_IS_FATAL ANY)
set(CMAKE_CXX_COMPILER clang++-14)
set(CMAKE_CXX_COMPILER_TARGET ${BRINDLE_TARGET})
set(CMAKE_CXX_FLAGS_INIT
    "-msse2 -isystem ${headers}/c++ -isystem ${headers}/c++/${BRINDLE_TARGET}")
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
