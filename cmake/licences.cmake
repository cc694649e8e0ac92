# Sets the variable `result` to the licences of what others wrote and the program contains.
function(brindle_licences_of_others result)
    set(licences "")
    foreach(name tabulator uplot)
        file(READ ${PROJECT_SOURCE_DIR}/third_party/${name}/LICENSE licence)
        string(APPEND licences "\nThe pages of brindle report contain ${name}:\n\n${licence}\n")
    endforeach()
    set(${result} "${licences}" PARENT_SCOPE)
endfunction()
