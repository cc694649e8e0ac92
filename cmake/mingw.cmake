# What both Windows targets share.
set(CMAKE_SYSTEM_NAME Windows)
# By full name: the plain one may be the compiler without threads.
set(CMAKE_CXX_COMPILER ${BRINDLE_TARGET}-g++-posix)
set(CMAKE_C_COMPILER ${BRINDLE_TARGET}-gcc-posix)  # the test framework asks for it
set(CMAKE_RC_COMPILER ${BRINDLE_TARGET}-windres)
set(BRINDLE_WIDL ${BRINDLE_TARGET}-widl)

set(CMAKE_FIND_ROOT_PATH /usr/${BRINDLE_TARGET})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Nothing but the system's own DLLs is needed where the result runs, and the same sources make the
# same bytes.
set(BRINDLE_LINK_FLAGS "-static -Wl,--no-insert-timestamp")
set(CMAKE_EXE_LINKER_FLAGS_INIT "${BRINDLE_LINK_FLAGS}")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "${BRINDLE_LINK_FLAGS}")
