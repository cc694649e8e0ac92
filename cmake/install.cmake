# What `cmake --install` puts where. Components: library (what programs need to run), headers (what
# they are built with), program (the command-line program).
install(TARGETS brindle EXPORT Brindle
    LIBRARY COMPONENT library NAMELINK_COMPONENT headers
    ARCHIVE COMPONENT headers
    RUNTIME COMPONENT library)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/brindle
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
    COMPONENT headers
    FILES_MATCHING PATTERN "*.h")

# For find_package(Brindle CONFIG). The library needs no other package, so the exported targets are
# the whole package file.
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/Brindle)
install(EXPORT Brindle
    FILE BrindleConfig.cmake
    NAMESPACE Brindle::
    DESTINATION ${package_dir}
    COMPONENT headers)
include(CMakePackageConfigHelpers)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/BrindleConfigVersion.cmake
    COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/BrindleConfigVersion.cmake
    DESTINATION ${package_dir}
    COMPONENT headers)

# For pkg-config. The prefix is found from where the file lies, so a tree may be moved.
file(RELATIVE_PATH pkgconfig_prefix
    /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" pkgconfig_prefix "${pkgconfig_prefix}")
set(pkgconfig_flags "")
if(BUILD_SHARED_LIBS)
    set(pkgconfig_flags " -DBRINDLE_SHARED")
endif()
configure_file(${PROJECT_SOURCE_DIR}/cmake/brindle.pc.in ${PROJECT_BINARY_DIR}/brindle.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/brindle.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
    COMPONENT headers)
