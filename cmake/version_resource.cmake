# brindle_add_version_resource(<target> DLL|APP <name> <description>): what Windows shows of a file's
# maker and version, which installers compare.
function(brindle_add_version_resource target type name description)
    enable_language(RC)
    if(type STREQUAL DLL)
        set(file_name ${name}.dll)
    else()
        set(file_name ${name}.exe)
    endif()
    string(REPLACE "." "," numbers "${PROJECT_VERSION}.0")
    set(resource ${CMAKE_CURRENT_BINARY_DIR}/${target}_version.rc)
    configure_file(${PROJECT_SOURCE_DIR}/cmake/version.rc.in ${resource} @ONLY)
    target_sources(${target} PRIVATE ${resource})
endfunction()
