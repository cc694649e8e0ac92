# The test frameworks for Windows: googletest from its Debian sources, and the headers alone of the
# library that checks properties.
# Half of the time that the tests take to compile would go into making them fast.
add_compile_options(-O0)

set(INSTALL_GTEST OFF)
set(gtest_disable_pthreads ON CACHE BOOL "" FORCE)
add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)

set(headers ${CMAKE_BINARY_DIR}/rapidcheck_headers)
file(MAKE_DIRECTORY ${headers})
# Not all of /usr/include: the compiler would take this system's headers for those of Windows.
file(CREATE_LINK /usr/include/rapidcheck ${headers}/rapidcheck SYMBOLIC)
file(CREATE_LINK /usr/include/rapidcheck.h ${headers}/rapidcheck.h SYMBOLIC)
add_library(rapidcheck INTERFACE)
target_include_directories(rapidcheck SYSTEM INTERFACE
    ${CMAKE_CURRENT_LIST_DIR}/without_properties
    ${headers})
# What only properties use.
target_compile_options(rapidcheck INTERFACE -Wno-unused-function)
