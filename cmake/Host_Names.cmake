# The names of the exported functions on Windows, where the library is built by another compiler than its hosts: see
# Export_Names.cmake. With MSVC nothing of this is needed, because its dllexport gives the hosts' names by itself.

# What shows the hosts' names: a Clang that knows their platform, and a reader of object files.
find_program(ORBE_HOST_CLANG NAMES clang++ clang++-14)
find_program(ORBE_LLVM_READOBJ NAMES llvm-readobj llvm-readobj-14)
find_program(ORBE_LLVM_DLLTOOL NAMES llvm-dlltool llvm-dlltool-14)
mark_as_advanced(ORBE_HOST_CLANG ORBE_LLVM_READOBJ ORBE_LLVM_DLLTOOL)

# Has a DLL export its functions under the hosts' names as well, and makes the import library that the hosts' linker
# takes. The library's path is in the global property ORBE_IMPORT_LIBRARY_MSVC; the one for the GNU linker is
# $<TARGET_LINKER_FILE:target>, as with every DLL.
function(orbe_export_host_names target dll_name)
    set(tools ORBE_HOST_CLANG ORBE_LLVM_READOBJ ORBE_LLVM_DLLTOOL)
    set(packages clang llvm llvm)
    foreach(tool package IN ZIP_LISTS tools packages)
        if(NOT ${tool})
            message(FATAL_ERROR "The names under which hosts import the DLL's functions cannot be made: "
                "${tool} was not found (Debian package ${package})")
        endif()
    endforeach()

    set(api_dir ${PROJECT_SOURCE_DIR}/api)
    set(output_dir ${CMAKE_CURRENT_BINARY_DIR}/export_names)
    set(stand_in_headers cstddef cstdint ctime string)
    list(TRANSFORM stand_in_headers PREPEND ${api_dir}/export_names/msvc/)
    add_custom_command(
        OUTPUT ${output_dir}/exports.def ${output_dir}/names.def
        BYPRODUCTS ${output_dir}/export_names_own.o ${output_dir}/export_names_host.o
        COMMAND ${CMAKE_COMMAND}
            -DSOURCE_DIR=${PROJECT_SOURCE_DIR}
            -DOUTPUT_DIR=${output_dir}
            -DTARGET_COMPILER=${CMAKE_CXX_COMPILER}
            -DHOST_CLANG=${ORBE_HOST_CLANG}
            -DREADOBJ=${ORBE_LLVM_READOBJ}
            -DDLL_NAME=${dll_name}
            -P ${PROJECT_SOURCE_DIR}/cmake/Export_Names.cmake
        DEPENDS
            ${PROJECT_SOURCE_DIR}/cmake/Export_Names.cmake
            ${api_dir}/NeuropixAPI.h
            ${api_dir}/NeuropixAPI_C.h
            ${api_dir}/NeuropixAPI_Functions.inc
            ${api_dir}/export_names/Export_Names.cpp
            ${stand_in_headers}
        COMMENT "Making the hosts' names of the exported functions"
        VERBATIM)
    target_sources(${target} PRIVATE ${output_dir}/exports.def)

    set(import_library ${PROJECT_BINARY_DIR}/${target}.lib)
    add_custom_command(
        OUTPUT ${import_library}
        COMMAND ${ORBE_LLVM_DLLTOOL} -m i386:x86-64 -d ${output_dir}/names.def -l ${import_library}
        DEPENDS ${output_dir}/names.def
        COMMENT "Making the import library ${target}.lib"
        VERBATIM)
    add_custom_target(${target}_import_library ALL DEPENDS ${import_library})
    # One maker of the definition files, even where the build runs several at a time.
    add_dependencies(${target}_import_library ${target})
    set_property(GLOBAL PROPERTY ORBE_IMPORT_LIBRARY_MSVC ${import_library})
endfunction()
