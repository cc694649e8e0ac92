# The package for Windows, of both widths: cpack --config cmake/windows-package.cmake, with both
# builds (presets windows-x86 and windows-x64) in build/.
get_filename_component(root ${CMAKE_CURRENT_LIST_DIR} DIRECTORY)
file(STRINGS ${root}/CMakeLists.txt project REGEX "^project\\(")
string(REGEX MATCH "[0-9]+\\.[0-9]+\\.[0-9]+" CPACK_PACKAGE_VERSION "${project}")

# Without this CPack says of a missing build only that it cannot read a file.
set(missing "")
foreach(preset windows-x86 windows-x64)
    set(build ${root}/build/${preset})
    if(NOT EXISTS ${build}/src/facade/com/Brindle.dll OR NOT EXISTS ${build}/host/brindle.exe)
        string(APPEND missing "\n  cmake --preset ${preset} && cmake --build --preset ${preset}")
    endif()
endforeach()
if(missing)
    message(FATAL_ERROR "The package for Windows needs builds that are not there. Build first:${missing}")
endif()

set(CPACK_GENERATOR ZIP)
set(CPACK_CMAKE_GENERATOR Ninja)
set(CPACK_PACKAGE_NAME brindle)
set(CPACK_PACKAGE_DESCRIPTION "Facts and tags of MP3 files, for automation hosts and the shell")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${CPACK_PACKAGE_DESCRIPTION}")
set(CPACK_PACKAGE_FILE_NAME brindle-${CPACK_PACKAGE_VERSION}-windows)
set(CPACK_PACKAGE_DIRECTORY ${root}/build/packages)
set(CPACK_INCLUDE_TOPLEVEL_DIRECTORY ON)

set(CPACK_INSTALL_CMAKE_PROJECTS
    "${root}/build/windows-x86;Brindle;windows;/x86"
    "${root}/build/windows-x64;Brindle;windows;/x64"
    "${root}/build/windows-x86;Brindle;about;/")
set(CPACK_INSTALLED_DIRECTORIES
    "${root}/cmake/windows" "."
    "${root}/examples" "examples"
    "${root}/docs" "docs")
# The manual's source; the builds make what Windows shows.
set(CPACK_IGNORE_FILES "\\.scd$")
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/windows-package-files.cmake)
