# CPack reads it once for each kind of package.
if(CPACK_GENERATOR STREQUAL "DEB" AND NOT CPACK_BRINDLE_SHARED)
    message(FATAL_ERROR "The Debian packages hold the shared library: configure with "
        "-DBUILD_SHARED_LIBS=ON -DCMAKE_INSTALL_PREFIX=/usr, build, and run cpack again.")
endif()
