# Writes the module definition files of the Windows DLL: cmake -D... -P Export_Names.cmake
#
# A host imports each function of namespace Neuropixels under the name that the platform's main compiler gives it; a DLL
# that another compiler builds exports that name as an alias of its own. Both names come from the compilers themselves:
# api/export_names/Export_Names.cpp holds the functions' addresses in one order, and the n-th relocation of its two
# objects names the same function, which is checked against the list of functions.
#
# In:  SOURCE_DIR       the project
#      OUTPUT_DIR       where the files go
#      TARGET_COMPILER  the compiler of the DLL (GCC's or Clang's command line, without options)
#      HOST_CLANG       a clang++ that knows the target x86_64-pc-windows-msvc
#      READOBJ          llvm-readobj
#      DLL_NAME         the DLL's file name
# Out: exports.def      for linking the DLL: every name that hosts import, with the DLL's own beside it
#      names.def        for making import libraries: the same names alone
cmake_minimum_required(VERSION 3.25)

foreach(parameter SOURCE_DIR OUTPUT_DIR TARGET_COMPILER HOST_CLANG READOBJ DLL_NAME)
    if(NOT DEFINED ${parameter} OR "${${parameter}}" STREQUAL "")
        message(FATAL_ERROR "Export_Names: ${parameter} is not given")
    endif()
endforeach()

set(names_dir ${SOURCE_DIR}/api/export_names)

# The symbols that the objects' pointers lead to, in order.
function(read_names result object)
    execute_process(
        COMMAND ${ARGN} -std=c++20 -O1 -g0 -DORBE_STATIC -I${SOURCE_DIR}/api -c ${names_dir}/Export_Names.cpp -o ${object}
        COMMAND_ERROR_IS_FATAL ANY)
    execute_process(COMMAND ${READOBJ} --relocations --expand-relocs ${object}
        OUTPUT_VARIABLE listing COMMAND_ERROR_IS_FATAL ANY)
    string(REGEX MATCHALL "Symbol: [^ \r\n]+" symbols "${listing}")
    list(TRANSFORM symbols REPLACE "^Symbol: " "")
    set(${result} "${symbols}" PARENT_SCOPE)
endfunction()

file(MAKE_DIRECTORY ${OUTPUT_DIR})
# -fno-pic: the pointers' relocations name the functions themselves wherever this runs.
read_names(own_names ${OUTPUT_DIR}/export_names_own.o ${TARGET_COMPILER} -fno-pic)
read_names(host_names ${OUTPUT_DIR}/export_names_host.o
    ${HOST_CLANG} --target=x86_64-pc-windows-msvc -nostdinc -I${names_dir}/msvc)

# The rows in the same order: the functions, then the twins.
file(STRINGS ${SOURCE_DIR}/api/NeuropixAPI_Functions.inc rows REGEX "^NP_[A-Z_]+\\(")
set(twins ${rows})
list(TRANSFORM rows REPLACE "^[^,]*, ([A-Za-z0-9_]+).*" "\\1")
list(TRANSFORM twins REPLACE "^[^,]*, ([A-Za-z0-9_]+).*" "np_\\1")

# api/NeuropixAPI_overloads.cpp
set(integer_overloads setSyncClockFrequency)

set(exports "EXPORTS\n")
set(names "LIBRARY \"${DLL_NAME}\"\nEXPORTS\n")
set(kinds)
foreach(row IN LISTS rows)
    list(APPEND kinds function)
endforeach()
list(APPEND rows ${twins})
foreach(row kind own host IN ZIP_LISTS rows kinds own_names host_names)
    if(kind STREQUAL "function" AND own MATCHES "^_ZN11Neuropixels[0-9]+${row}[A-Z]" AND
       host MATCHES "^[?]${row}@Neuropixels@@YA")
        string(APPEND exports "    \"${host}\" = ${own}\n")
    elseif(NOT kind AND own STREQUAL row AND host STREQUAL row)
        string(APPEND exports "    ${row}\n")
    else()
        message(FATAL_ERROR "Export_Names: ${row} is called \"${own}\" and \"${host}\"")
    endif()
    string(APPEND names "    \"${host}\"\n")
    if(kind STREQUAL "function" AND row IN_LIST integer_overloads)
        # The last parameter is a double here and an int there.
        string(REGEX REPLACE "N@Z$" "H@Z" host "${host}")
        string(REGEX REPLACE "d$" "i" own "${own}")
        string(APPEND exports "    \"${host}\" = ${own}\n")
        string(APPEND names "    \"${host}\"\n")
    endif()
endforeach()
file(WRITE ${OUTPUT_DIR}/exports.def "${exports}")
file(WRITE ${OUTPUT_DIR}/names.def "${names}")
