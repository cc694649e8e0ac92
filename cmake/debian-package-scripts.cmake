# Runs when the Debian packages are written. CPack gives each shared library scripts that call
# ldconfig, which dpkg does by the trigger in cmake/debian.
if(NOT CPACK_GENERATOR STREQUAL "DEB")
    return()
endif()
foreach(package IN LISTS CPACK_PACKAGE_FILES)
    if(package MATCHES "/${CPACK_BRINDLE_LIBRARY_PACKAGE}_[^/]*\\.deb$")
        set(folder ${CPACK_BRINDLE_BINARY_DIR}/debian/unpacked)
        file(REMOVE_RECURSE ${folder})
        execute_process(COMMAND dpkg-deb --raw-extract ${package} ${folder}
            COMMAND_ERROR_IS_FATAL ANY)
        file(REMOVE ${folder}/DEBIAN/postinst ${folder}/DEBIAN/postrm)
        execute_process(COMMAND dpkg-deb --root-owner-group --build ${folder} ${package}
            COMMAND_ERROR_IS_FATAL ANY OUTPUT_QUIET)
        file(REMOVE_RECURSE ${folder})
    endif()
endforeach()
