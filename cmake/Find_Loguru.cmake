# Provides `loguru::loguru`, whatever the platform calls its loguru, so that the sources include
# <loguru.hpp> and nothing else. Looked for in this order:
#   1. the upstream package (vcpkg, Fedora);
#   2. Debian's build of it, which ships with VTK as vtk_loguru.h;
#   3. common/loguru_subset, which serves where a toolchain has neither, or where it is asked for.
option(ORBE_LOGURU_SUBSET "Log through common/loguru_subset, whether there is a loguru package or not" OFF)

if(NOT ORBE_LOGURU_SUBSET)
    find_package(loguru CONFIG QUIET)
    if(NOT TARGET loguru::loguru)
        find_package(VTK 9.1 QUIET COMPONENTS loguru)
    endif()
endif()
add_subdirectory(${PROJECT_SOURCE_DIR}/common/loguru_subset)

if(TARGET loguru::loguru)
    set(ORBE_LOGURU_FLAVOUR "package")
elseif(TARGET VTK::loguru)
    set(ORBE_LOGURU_FLAVOUR "vtk")
    set(orbe_loguru_shim_dir ${PROJECT_BINARY_DIR}/loguru_shim)
    file(CONFIGURE OUTPUT ${orbe_loguru_shim_dir}/loguru.hpp
        CONTENT "#pragma once\n#include <vtk_loguru.h>\n" @ONLY)
    add_library(orbe_loguru_vtk INTERFACE)
    target_include_directories(orbe_loguru_vtk SYSTEM INTERFACE ${orbe_loguru_shim_dir})
    target_link_libraries(orbe_loguru_vtk INTERFACE VTK::loguru)
    add_library(loguru::loguru ALIAS orbe_loguru_vtk)
else()
    set(ORBE_LOGURU_FLAVOUR "subset")
    add_library(loguru::loguru ALIAS orbe_loguru_subset)
endif()
message(STATUS "loguru: ${ORBE_LOGURU_FLAVOUR}")
