# Builds the small library in house/ as it is, and with what no room may do, and looks whether the walls hold:
# cmake -D... -P Walls_Test.cmake
#
# In:  CMAKE_DIR    the project's cmake/
#      GENERATOR    of the build
#      COMPILER     of the build
#      OUTPUT_DIR   where it happens
cmake_minimum_required(VERSION 3.25)

# build_house(RESULT MESSAGES OPTION...): a fresh copy, configured and built. Every source in it compiles, with a wall or
# without one.
function(build_house result messages)
    execute_process(
        COMMAND ${CMAKE_COMMAND} -S ${OUTPUT_DIR}/house -B ${OUTPUT_DIR}/build -G ${GENERATOR}
            -DCMAKE_CXX_COMPILER=${COMPILER} -DORBE_CMAKE_DIR=${CMAKE_DIR} ${ARGN}
        RESULT_VARIABLE status OUTPUT_VARIABLE configuring ERROR_VARIABLE configuring)
    set(building)
    if(status EQUAL 0)
        execute_process(COMMAND ${CMAKE_COMMAND} --build ${OUTPUT_DIR}/build
            RESULT_VARIABLE status OUTPUT_VARIABLE building ERROR_VARIABLE building)
    endif()
    # CMake breaks the lines of its messages.
    string(REGEX REPLACE "[ \n\r]+" " " text "${configuring}${building}")
    set(${result} ${status} PARENT_SCOPE)
    set(${messages} "${text}" PARENT_SCOPE)
endfunction()

function(lay_out_house)
    file(REMOVE_RECURSE ${OUTPUT_DIR})
    file(COPY ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/house DESTINATION ${OUTPUT_DIR})
endfunction()

# The text must be the reason why the house cannot be built.
function(expect_wall what text)
    build_house(status messages ${ARGN})
    string(FIND "${messages}" "${text}" found)
    if(status EQUAL 0)
        message(SEND_ERROR "${what}: the house was built all the same")
    elseif(found EQUAL -1)
        message(SEND_ERROR "${what}: not for \"${text}\" but for \"${messages}\"")
    else()
        message(STATUS "${what}: refused")
    endif()
endfunction()

lay_out_house()
build_house(status messages)
if(NOT status EQUAL 0)
    message(FATAL_ERROR "The house does not stand: ${messages}")
endif()

# In a house that has been built already, as while working on it.
file(WRITE ${OUTPUT_DIR}/house/lower/Lamp.h "#include \"upper/Table.h\"\n")
expect_wall("An include against the direction of use"
    "lower/Lamp.h includes \"upper/Table.h\", and lower does not use upper")

lay_out_house()
file(APPEND ${OUTPUT_DIR}/house/lower/Floor.cpp "#include \"../upper/Table.h\"\n")
expect_wall("An include by way of the parent folder"
    "lower/Floor.cpp includes \"../upper/Table.h\", and lower does not use ../upper")

lay_out_house()
file(APPEND ${OUTPUT_DIR}/house/upper/Table.cpp "  #  include \"Table.h\"\n")
expect_wall("An include that names no room" "upper/Table.cpp includes \"Table.h\", which names no room")

lay_out_house()
file(APPEND ${OUTPUT_DIR}/house/lower/Floor.cpp "#include <upper/Table.h>\n")
expect_wall("An include in brackets" "lower/Floor.cpp includes a room's file in brackets: #include <upper/Table.h>")

lay_out_house()
file(WRITE ${OUTPUT_DIR}/house/lower/NeuropixAPI.h "#pragma once\n")
file(APPEND ${OUTPUT_DIR}/house/lower/Floor.cpp "#include \"NeuropixAPI.h\"\n")
expect_wall("An include of the published API"
    "lower/Floor.cpp includes \"NeuropixAPI.h\", and lower does not use published_api")

lay_out_house()
expect_wall("A room that uses one above it" "Room upper uses orbe_lower, which is not there (yet)" -DUPSIDE_DOWN=ON)
