# The library is laid out in rooms: a folder for one concern, a static library of its own, and the rooms that it may
# use. An include names the room ("fpga/SPI_Module.h"), also inside it, and Check_Room.cmake holds each room's includes
# against its USES before the room is compiled. A room can only use one that is there already, so that use runs one way.

set(ORBE_CHECK_ROOM ${CMAKE_CURRENT_LIST_DIR}/Check_Room.cmake)

# orbe_add_room(SOURCES file... USES target...): the folder of the calling CMakeLists.txt becomes the room of its
# name, the target orbe_<room>. USES takes rooms and libraries from outside; a room that only one of its USES uses is not
# for the room to include. Rooms of the programs and not of the shared library say OUTSIDE_LIBRARY.
function(orbe_add_room)
    cmake_parse_arguments(room "OUTSIDE_LIBRARY" "" "SOURCES;USES" ${ARGN})
    cmake_path(GET CMAKE_CURRENT_SOURCE_DIR FILENAME room_name)
    set(target orbe_${room_name})
    add_library(${target} STATIC ${room_SOURCES})
    cmake_path(GET CMAKE_CURRENT_SOURCE_DIR PARENT_PATH include_root)
    target_include_directories(${target} PUBLIC ${include_root})
    target_link_libraries(${target} PUBLIC ${room_USES} PRIVATE orbe_options orbe_hardening)
    if(NOT room_OUTSIDE_LIBRARY)
        target_compile_definitions(${target} PRIVATE ORBE_BUILDING_LIBRARY)
        set_property(GLOBAL APPEND PROPERTY ORBE_ROOMS ${target})
    endif()
    orbe_add_walls(${target} ${room_name} ${room_USES})
endfunction()

# Holds the includes of the folder's files against the uses, again whenever one of them changes.
function(orbe_add_walls target room_name)
    set(allowed ${room_name})
    foreach(use IN LISTS ARGN)
        if(NOT TARGET ${use})
            message(FATAL_ERROR "Room ${room_name} uses ${use}, which is not there (yet): rooms are added from the "
                "ground up, and use runs one way")
        endif()
        string(REGEX REPLACE "^orbe_" "" allowed_room ${use})
        list(APPEND allowed ${allowed_room})
    endforeach()
    set_target_properties(${target} PROPERTIES ORBE_ROOM ${room_name})
    file(GLOB files CONFIGURE_DEPENDS *.h *.cpp *.inc)
    set(stamp ${CMAKE_CURRENT_BINARY_DIR}/${target}.walls)
    add_custom_command(
        OUTPUT ${stamp}
        COMMAND ${CMAKE_COMMAND}
            -DROOM=${room_name}
            -DFOLDER=${CMAKE_CURRENT_SOURCE_DIR}
            "-DALLOWED=${allowed}"
            -P ${ORBE_CHECK_ROOM}
        COMMAND ${CMAKE_COMMAND} -E touch ${stamp}
        DEPENDS ${files} ${ORBE_CHECK_ROOM}
        COMMENT "Checking what room ${room_name} includes"
        VERBATIM)
    add_custom_target(${target}_walls DEPENDS ${stamp})
    add_dependencies(${target} ${target}_walls)
endfunction()
