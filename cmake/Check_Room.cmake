# Holds what a room's files include against what the room may use: cmake -D... -P Check_Room.cmake
#
# In:  ROOM     the room's name
#      FOLDER   its folder
#      ALLOWED  the rooms whose files it may include, itself among them
# An include in quotes names a room and a file in it; only the headers of the published API, which hosts include as well,
# stand without one, and a room may include them when it uses `published_api`.
cmake_minimum_required(VERSION 3.25)

set(published_headers NeuropixAPI.h NeuropixAPI_C.h NeuropixAPI_plain.h NeuropixAPI_Functions.inc)

set(faults)
file(GLOB files RELATIVE ${FOLDER} ${FOLDER}/*.h ${FOLDER}/*.cpp ${FOLDER}/*.inc)
foreach(file IN LISTS files)
    # Rooms lie under shared roots, so that the brackets of the system's headers would reach them as well.
    file(STRINGS ${FOLDER}/${file} in_brackets REGEX "^[ \t]*#[ \t]*include[ \t]*<[a-z_]+/[A-Z][A-Za-z0-9_]*[.](h|inc)>")
    foreach(include IN LISTS in_brackets)
        list(APPEND faults "${ROOM}/${file} includes a room's file in brackets: ${include}")
    endforeach()
    file(STRINGS ${FOLDER}/${file} includes REGEX "^[ \t]*#[ \t]*include[ \t]*\"")
    foreach(include IN LISTS includes)
        string(REGEX REPLACE "^[^\"]*\"([^\"]*)\".*" "\\1" header "${include}")
        string(REGEX REPLACE "/[^/]*$" "" room "${header}")
        if(header IN_LIST published_headers)
            set(room published_api)
        elseif(room STREQUAL header)
            list(APPEND faults "${ROOM}/${file} includes \"${header}\", which names no room")
            continue()
        endif()
        if(NOT room IN_LIST ALLOWED)
            list(APPEND faults "${ROOM}/${file} includes \"${header}\", and ${ROOM} does not use ${room}")
        endif()
    endforeach()
endforeach()
if(faults)
    list(JOIN faults "\n  " text)
    message(FATAL_ERROR "Room ${ROOM} reaches through a wall (what it uses is said in its CMakeLists.txt):\n  ${text}")
endif()
