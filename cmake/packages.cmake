# Debian packages: `cpack` in a build with BUILD_SHARED_LIBS and CMAKE_INSTALL_PREFIX=/usr.
set(CPACK_GENERATOR DEB)
set(CPACK_PROJECT_CONFIG_FILE ${CMAKE_CURRENT_LIST_DIR}/packages-check.cmake)
# CPack hands on only variables of its own.
set(CPACK_BRINDLE_SHARED ${BUILD_SHARED_LIBS})
set(CPACK_PACKAGE_NAME brindle)
set(CPACK_PACKAGE_VENDOR "the Brindle authors")
set(CPACK_PACKAGE_CONTACT "the Brindle authors <maintainers@users.noreply.c-seed-1a2d2f39.example>")
set(CPACK_PACKAGE_CHECKSUM SHA256)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL library headers program)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})

set(library_package libbrindle${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${library_package})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA
    ${PROJECT_SOURCE_DIR}/cmake/debian/triggers
    ${PROJECT_BINARY_DIR}/debian/symbols)
set(CPACK_DEBIAN_HEADERS_PACKAGE_NAME libbrindle-dev)
set(CPACK_DEBIAN_HEADERS_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_HEADERS_PACKAGE_DEPENDS "${library_package} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME brindle)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_DEPENDS "${library_package} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SECTION sound)

set(about "Brindle tells a radio station's playout and library programs what an
MP3 file is and what is written in it, and changes that with every
audio byte unchanged.")
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION "facts and tags of MP3 files (shared library)
${about}

This package holds the library that programs need to run.")
set(CPACK_COMPONENT_HEADERS_DESCRIPTION "facts and tags of MP3 files (development files)
${about}

This package holds what programs are built with.")
set(CPACK_COMPONENT_PROGRAM_DESCRIPTION "facts and tags of MP3 files (command-line program)
${about}

This package holds the program brindle, which shows, checks and
changes files.")

# Every Debian package has its licence beside it, the program's also those of the files of others
# that it contains.
include(${CMAKE_CURRENT_LIST_DIR}/licences.cmake)
brindle_licences_of_others(licences)
file(READ ${PROJECT_SOURCE_DIR}/LICENSE licence)
string(PREPEND licences "${licence}")
set(program_licences ${PROJECT_BINARY_DIR}/debian/program-copyright)
file(CONFIGURE OUTPUT ${program_licences} CONTENT "${licences}" @ONLY)
foreach(pair library:${library_package} headers:libbrindle-dev program:brindle)
    string(REPLACE ":" ";" pair ${pair})
    list(GET pair 0 component)
    list(GET pair 1 package)
    set(licence ${PROJECT_SOURCE_DIR}/LICENSE)
    if(component STREQUAL program)
        set(licence ${program_licences})
    endif()
    install(FILES ${licence}
        RENAME copyright
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package}
        COMPONENT ${component})
endforeach()
install(FILES ${PROJECT_SOURCE_DIR}/cmake/debian/lintian-overrides
    RENAME ${library_package}
    DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides
    COMPONENT library)

# Makes what can be made only when all files are in place.
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/debian-package-files.cmake)
set(CPACK_POST_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/debian-package-scripts.cmake)
set(CPACK_BRINDLE_SOURCE_DIR ${PROJECT_SOURCE_DIR})
set(CPACK_BRINDLE_BINARY_DIR ${PROJECT_BINARY_DIR})
set(CPACK_BRINDLE_LIBRARY_PACKAGE ${library_package})
include(CPack)
