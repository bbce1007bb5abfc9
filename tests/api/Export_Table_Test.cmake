# cmake -D... -P Export_Table_Test.cmake: fails when a name is missing among those that the built shared library exports,
# is misspelt there, or is too many.
#
# In:  SOURCE_DIR   the project
#      OUTPUT_DIR   where the files of this test go
#      LIBRARY      the shared library
#      CXXFILT      c++filt
#      NM           nm, for a Linux library
#      READOBJ      llvm-readobj, for a DLL; with it what else cmake/Export_Names.cmake takes
cmake_minimum_required(VERSION 3.25)

set(failures 0)
function(fail text)
    message("${text}")
    math(EXPR failures "${failures} + 1")
    set(failures ${failures} PARENT_SCOPE)
endfunction()

# The lines of a text file but empty ones and comments.
function(read_lines result file)
    file(STRINGS ${file} lines REGEX "^[^#]")
    set(${result} "${lines}" PARENT_SCOPE)
endfunction()

# The exported names, one a line, as the compiler of the library makes them.
set(export_file ${OUTPUT_DIR}/exported_names.txt)
if(READOBJ)
    include(${SOURCE_DIR}/cmake/Export_Names.cmake)
    set(lister ${READOBJ} --coff-exports)
else()
    file(MAKE_DIRECTORY ${OUTPUT_DIR})
    set(lister ${NM} --dynamic --defined-only --format=posix)
endif()
execute_process(COMMAND ${lister} ${LIBRARY} OUTPUT_VARIABLE text COMMAND_ERROR_IS_FATAL ANY)
if(READOBJ)
    string(REGEX MATCHALL "Name: [^ \n\r]+" exports "${text}")
    list(TRANSFORM exports REPLACE "^Name: " "")
else()
    string(REGEX MATCHALL "[^\n]+" exports "${text}")
    list(TRANSFORM exports REPLACE " .*$" "")
endif()
list(JOIN exports "\n" text)
file(WRITE ${export_file} "${text}\n")

file(STRINGS ${SOURCE_DIR}/api/NeuropixAPI_Functions.inc rows REGEX "^NP_[A-Z_]+\\(")
read_lines(published ${SOURCE_DIR}/tests/api/published_functions.txt)
read_lines(class_names ${SOURCE_DIR}/tests/api/exported_classes.txt)
foreach(table exports rows published class_names)
    if(NOT ${table})
        message(FATAL_ERROR "nothing to compare with: ${table} is empty")
    endif()
endforeach()

# In the words of the sources, without parameters.
execute_process(COMMAND ${CXXFILT} INPUT_FILE ${export_file} OUTPUT_VARIABLE text COMMAND_ERROR_IS_FATAL ANY)
string(REGEX REPLACE "(\\[abi:cxx11\\])?\\([^\n]*" "" text "${text}")
string(REGEX MATCHALL "[^\n\r]+" own_names "${text}")

# ---- The functions, by the published set and by the library's list, under the names of the library's own compiler and
# those of the C twins.

set(listed)
set(twins)
foreach(row IN LISTS rows)
    string(REGEX MATCH "^NP_[A-Z_]+\\([^,]*, ([A-Za-z0-9_]+)" name "${row}")
    list(APPEND listed ${CMAKE_MATCH_1})
    list(APPEND twins np_${CMAKE_MATCH_1})
endforeach()

foreach(name IN LISTS published listed)
    if(NOT "Neuropixels::${name}" IN_LIST own_names)
        fail("not exported: Neuropixels::${name}")
    endif()
endforeach()
set(published_twins ${published})
list(TRANSFORM published_twins PREPEND "np_")
foreach(name IN LISTS published_twins twins)
    if(NOT name IN_LIST exports)
        fail("not exported: ${name}")
    endif()
endforeach()

# ---- The functions under the names that hosts of the platform's main compiler import.

if(READOBJ)
    file(STRINGS ${OUTPUT_DIR}/names.def host_names REGEX "^ +\"")
    list(TRANSFORM host_names REPLACE "^ +\"(.*)\"$" "\\1")
    list(LENGTH host_names host_name_count)
    list(LENGTH listed expected_count)
    list(LENGTH twins twin_count)
    list(LENGTH integer_overloads overload_count)
    math(EXPR expected_count "${expected_count} + ${twin_count} + ${overload_count}")
    if(NOT host_name_count EQUAL expected_count)
        fail("${host_name_count} names for hosts, but ${expected_count} functions and twins")
    endif()
    foreach(name IN LISTS host_names)
        if(NOT name IN_LIST exports)
            fail("not exported: ${name}")
        endif()
    endforeach()
    foreach(name IN LISTS published)
        set(decorated ${exports})
        list(FILTER decorated INCLUDE REGEX "^[?]${name}@Neuropixels@@Y")
        list(LENGTH decorated count)
        set(expected 1)
        if(name IN_LIST integer_overloads)
            set(expected 2)
        endif()
        if(NOT count EQUAL expected)
            fail("not exported once for hosts: ${name} (${decorated})")
        endif()
    endforeach()
endif()

# ---- The classes.

foreach(name IN LISTS class_names)
    if(NOT name IN_LIST own_names)
        fail("not exported: ${name}")
    endif()
endforeach()

# ---- Nothing else: what the sources mark for export, and what the compiler makes of the standard library for it.

set(marked)
foreach(layer api common ORBE_Controller/src Unified_PSB_Demux/src)
    file(GLOB_RECURSE headers ${SOURCE_DIR}/${layer}/*.h)
    foreach(header IN LISTS headers)
        file(STRINGS ${header} lines REGEX "ORBE_EXPORT ")
        foreach(line IN LISTS lines)
            if(line MATCHES "^(class|struct) ORBE_EXPORT ([A-Za-z0-9_]+)")
                list(APPEND marked ${CMAKE_MATCH_2})
            elseif(line MATCHES "^ORBE_EXPORT [^(]* ([a-z0-9_]+)\\(")
                list(APPEND marked ${CMAKE_MATCH_1})
            endif()
        endforeach()
    endforeach()
endforeach()

foreach(name IN LISTS own_names)
    # Compilers mark the type information and the tables of bases and users of an exported class as well; there is nothing
    # in them that could be called.
    if(name MATCHES "^(typeinfo|typeinfo name|vtable|VTT) for ")
        continue()
    endif()
    if(name MATCHES "^Neuropixels::(.*)$")
        if(NOT CMAKE_MATCH_1 IN_LIST listed)
            fail("exported, but not listed: ${name}")
        endif()
    elseif(name MATCHES "^np_")
        if(NOT name IN_LIST twins)
            fail("exported, but not listed: ${name}")
        endif()
    elseif(name MATCHES "^[?]")
        if(NOT name IN_LIST host_names)
            fail("exported, but not listed: ${name}")
        endif()
    elseif(name MATCHES "^((non-virtual|virtual) thunk to )?Pelgar::ORBE::(demux::)?([A-Za-z0-9_]+)")
        if(NOT CMAKE_MATCH_4 IN_LIST marked)
            fail("exported, but not marked for it: ${name}")
        endif()
    elseif(NOT name MATCHES "^([a-z ]+ )?(std|__gnu_cxx)::")
        fail("exported, but not part of the library: ${name}")
    endif()
endforeach()

if(failures)
    message(FATAL_ERROR "${failures} names are wrong")
endif()
list(LENGTH exports count)
message(STATUS "${count} exported names, as they should be")
