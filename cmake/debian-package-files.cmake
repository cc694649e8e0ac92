# Runs when the files of all Debian packages stand in CPACK_TEMPORARY_DIRECTORY, each component in a
# folder of its own.
if(NOT CPACK_GENERATOR STREQUAL "DEB")
    return()
endif()
set(staged ${CPACK_TEMPORARY_DIRECTORY})

# The symbols of the library, by which other packages tell from which version on they can use it.
file(GLOB_RECURSE library ${staged}/library/*/lib${CPACK_PACKAGE_NAME}.so.${CPACK_PACKAGE_VERSION})
list(LENGTH library libraries)
if(NOT libraries EQUAL 1)
    message(FATAL_ERROR "There is not one shared library in ${staged}/library: ${library}")
endif()
execute_process(COMMAND nm --dynamic --defined-only --format=posix ${library}
    OUTPUT_VARIABLE listed COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "[^\n ]+ [A-Zu]" listed "${listed}")
set(symbols "")
foreach(symbol IN LISTS listed)
    string(REGEX REPLACE " .$" "" symbol "${symbol}")
    list(APPEND symbols " ${symbol}@Base ${CPACK_PACKAGE_VERSION}")
endforeach()
list(SORT symbols)
list(JOIN symbols "\n" symbols)
file(WRITE ${CPACK_BRINDLE_BINARY_DIR}/debian/symbols
    "lib${CPACK_PACKAGE_NAME}.so.${CPACK_PACKAGE_VERSION_MAJOR} "
    "${CPACK_BRINDLE_LIBRARY_PACKAGE} #MINVER#\n"
    "* Build-Depends-Package: lib${CPACK_PACKAGE_NAME}-dev\n${symbols}\n")
file(CHMOD ${CPACK_BRINDLE_BINARY_DIR}/debian/symbols
    FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)

# Debian's list of versions, and what a reader wants to know of them.
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
set(changes ${CPACK_BRINDLE_BINARY_DIR}/debian/changelog)
file(WRITE ${changes} "${CPACK_PACKAGE_NAME} (${CPACK_PACKAGE_VERSION}) unstable; urgency=medium\n\n"
    "  * See NEWS.gz.\n\n -- ${CPACK_PACKAGE_CONTACT}  ${date}\n")
set(news ${CPACK_BRINDLE_BINARY_DIR}/debian/NEWS)
execute_process(COMMAND gzip -9nc ${changes}
    OUTPUT_FILE ${changes}.gz COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND gzip -9nc ${CPACK_BRINDLE_SOURCE_DIR}/CHANGELOG.md
    OUTPUT_FILE ${news}.gz COMMAND_ERROR_IS_FATAL ANY)
set(documents ${changes}.gz ${news}.gz)

# The licences of all source files.
find_program(REUSE reuse)
if(REUSE)
    set(spdx ${CPACK_BRINDLE_BINARY_DIR}/debian/brindle.spdx.gz)
    execute_process(COMMAND ${CPACK_BRINDLE_SOURCE_DIR}/scripts/write-spdx ${spdx}
        COMMAND_ERROR_IS_FATAL ANY)
    list(APPEND documents ${spdx})
else()
    message(WARNING "The packages get no SPDX document: reuse is not installed")
endif()

file(GLOB folders ${staged}/*/usr/share/doc/*)
foreach(folder IN LISTS folders)
    file(COPY ${documents} DESTINATION ${folder}
        FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
endforeach()
