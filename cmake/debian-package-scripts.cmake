# Runs when the Debian packages are written, and has dpkg write them again. CPack gives each shared
# library scripts that call ldconfig, which dpkg does by the trigger in cmake/debian; and it writes the
# time of packaging into each package, even if SOURCE_DATE_EPOCH tells another.
if(NOT CPACK_GENERATOR STREQUAL "DEB")
    return()
endif()
set(folder ${CPACK_BRINDLE_BINARY_DIR}/debian/unpacked)
foreach(package IN LISTS CPACK_PACKAGE_FILES)
    file(REMOVE_RECURSE ${folder})
    execute_process(COMMAND dpkg-deb --raw-extract ${package} ${folder}
        COMMAND_ERROR_IS_FATAL ANY)
    file(REMOVE ${folder}/DEBIAN/postinst ${folder}/DEBIAN/postrm)
    execute_process(COMMAND dpkg-deb --root-owner-group --build ${folder} ${package}
        COMMAND_ERROR_IS_FATAL ANY OUTPUT_QUIET)
endforeach()
file(REMOVE_RECURSE ${folder})
