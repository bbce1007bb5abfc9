# cmake -D... -P Embedded_Test.cmake: fails when the library, as a part of another project that names no build type,
# installs or packs anything there, or is not optimised.
#
# In:  BUILD   the other project's build, made by Ninja
#      PREFIX  a folder to install into
cmake_minimum_required(VERSION 3.25)

foreach(file CPackConfig.cmake CPackSourceConfig.cmake)
    if(EXISTS ${BUILD}/${file})
        message(FATAL_ERROR "${file} was made for the project that the library is a part of")
    endif()
endforeach()

file(REMOVE_RECURSE ${PREFIX})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${PREFIX} OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
file(GLOB_RECURSE installed RELATIVE ${PREFIX} ${PREFIX}/*)
if(NOT installed STREQUAL "share/consumer/main.cpp")
    message(FATAL_ERROR "installed beside the project's own file: ${installed}")
endif()

file(STRINGS ${BUILD}/CMakeCache.txt type REGEX "^CMAKE_BUILD_TYPE:[A-Z]+=.")
if(type)
    message(FATAL_ERROR "the project's own build type was set: ${type}")
endif()
file(READ ${BUILD}/compile_commands.json commands)
string(JSON count LENGTH "${commands}")
math(EXPR last "${count} - 1")
foreach(i RANGE ${last})
    string(JSON source GET "${commands}" ${i} file)
    string(JSON command GET "${commands}" ${i} command)
    if(source MATCHES "/Unified_PSB_Demux/" AND NOT command MATCHES " -O[23] ")
        message(FATAL_ERROR "not optimised: ${command}")
    endif()
endforeach()
