# brindle_unpack_kept_inputs(<folder> [EXCEPT <target>...]): what fuzz/corpus holds for each fuzz
# target, as <folder>/<target>/*. Nothing of an older archive is left.
function(brindle_unpack_kept_inputs folder)
    cmake_parse_arguments(PARSE_ARGV 1 inputs "" "" EXCEPT)
    file(REMOVE_RECURSE ${folder})
    file(GLOB archives CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/fuzz/corpus/*.tar.xz)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${archives})
    foreach(archive ${archives})
        get_filename_component(target ${archive} NAME_WE)
        if(NOT target IN_LIST inputs_EXCEPT)
            file(ARCHIVE_EXTRACT INPUT ${archive} DESTINATION ${folder}/${target})
        endif()
    endforeach()
endfunction()
