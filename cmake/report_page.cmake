# Writes the page of `brindle report` as a C++ source.
#
#   cmake -D source=<folder of the project> -D output=<file> -P cmake/report_page.cmake
#
# In host/report/page/page.html, {{NAME}} stands for the content of a file. The page's
# Content-Security-Policy allows exactly these scripts and styles, by their hashes.
cmake_minimum_required(VERSION 3.22...3.25)

set(folder ${source}/host/report/page)
set(third_party ${source}/third_party)

# Files of others are used only as their makers published them.
file(STRINGS ${third_party}/SHA256SUMS sums)
foreach(line IN LISTS sums)
    string(REGEX MATCH "^([0-9a-f]+)  (.+)$" line "${line}")
    set(expected ${CMAKE_MATCH_1})
    set(name ${CMAKE_MATCH_2})
    file(SHA256 ${third_party}/${name} sum)
    if(NOT sum STREQUAL expected)
        message(FATAL_ERROR "third_party/${name} is not the file that third_party/SHA256SUMS names")
    endif()
    list(APPEND checked ${name})
endforeach()

# Hexadecimal digits to base64: three bytes are four characters.
function(to_base64 digits result)
    set(alphabet "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/")
    set(text "")
    string(LENGTH "${digits}" length)
    foreach(begin RANGE 0 ${length} 6)
        string(SUBSTRING "${digits}" ${begin} 6 group)
        string(LENGTH "${group}" group_length)
        if(group_length EQUAL 0)
            break()
        endif()
        string(SUBSTRING "${group}000000" 0 6 group)
        math(EXPR bits "0x${group}")
        # Two digits give two characters, four give three; "=" fills the group.
        math(EXPR characters "${group_length} / 2 + 1")
        foreach(place 0 1 2 3)
            if(place LESS characters)
                math(EXPR index "(${bits} >> (18 - 6 * ${place})) & 63")
                string(SUBSTRING ${alphabet} ${index} 1 character)
            else()
                set(character "=")
            endif()
            string(APPEND text "${character}")
        endforeach()
    endforeach()
    set(${result} "${text}" PARENT_SCOPE)
endfunction()

function(path_of name result)
    if(EXISTS ${folder}/${name})
        set(${result} ${folder}/${name} PARENT_SCOPE)
    elseif(name IN_LIST checked)
        set(${result} ${third_party}/${name} PARENT_SCOPE)
    else()
        message(FATAL_ERROR "page.html: there is no ${name}, or third_party/SHA256SUMS lacks it")
    endif()
endfunction()

file(READ ${folder}/page.html page)
foreach(element script style)
    string(REGEX MATCHALL "<${element}>{{[^}]+}}</${element}>" found "${page}")
    set(hashes "")
    foreach(match IN LISTS found)
        string(REGEX REPLACE ".*{{([^}]+)}}.*" "\\1" name "${match}")
        path_of(${name} path)
        file(SHA256 ${path} digits)
        to_base64(${digits} hash)
        string(APPEND hashes " 'sha256-${hash}'")
        file(READ ${path} content)
        # Either would end the element early, or keep it from ending.
        if(content MATCHES "</${element}|<!--")
            message(FATAL_ERROR "${name} cannot be part of a page")
        endif()
    endforeach()
    string(REPLACE "{{${element} hashes}}" "${hashes}" page "${page}")
endforeach()
string(REGEX MATCHALL "{{[^}]+}}" found "${page}")
foreach(match IN LISTS found)
    string(REGEX REPLACE "[{}]" "" name "${match}")
    if(NOT name STREQUAL "data")
        path_of(${name} path)
        file(READ ${path} content)
        string(REPLACE "${match}" "${content}" page "${page}")
    endif()
endforeach()

string(FIND "${page}" "{{data}}" place)
if(place EQUAL -1)
    message(FATAL_ERROR "page.html has no place for the data")
endif()
string(SUBSTRING "${page}" 0 ${place} before)
math(EXPR place "${place} + 8")
string(SUBSTRING "${page}" ${place} -1 after)
if(page MATCHES "\\)page\"")
    message(FATAL_ERROR "The page contains the end of its own string")
endif()
file(WRITE ${output} "// Made by cmake/report_page.cmake.
#include \"report/page.h\"

namespace brindle::host {

const std::string_view kPageBeforeData = R\"page(${before})page\";
const std::string_view kPageAfterData = R\"page(${after})page\";

}  // namespace brindle::host
")
