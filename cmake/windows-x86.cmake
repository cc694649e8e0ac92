# Cross compiling for 32-bit Windows.
set(BRINDLE_TARGET i686-w64-mingw32)
# Numbers as every other build computes them: the x87 rounds differently. A 32-bit host may call
# with a stack that is aligned to 4 bytes only.
set(CMAKE_CXX_FLAGS_INIT "-msse2 -mfpmath=sse -mstackrealign")
set(CMAKE_SYSTEM_PROCESSOR i686)
include(${CMAKE_CURRENT_LIST_DIR}/mingw.cmake)
