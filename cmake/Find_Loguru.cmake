# Provides `loguru::loguru`, so that the sources include <loguru.hpp> and nothing else. What logs is
# common/loguru_subset, which is part of the library: what ships depends on nothing but the run time of C and C++
# (Debian's loguru would bring VTK along). With ORBE_LOGURU_SUBSET=OFF it is a loguru package, looked for in this order:
#   1. the upstream package (vcpkg, Fedora);
#   2. Debian's build of it, which ships with VTK as vtk_loguru.h.
option(ORBE_LOGURU_SUBSET "Log through common/loguru_subset; OFF: through a loguru package" ON)

add_subdirectory(${PROJECT_SOURCE_DIR}/common/loguru_subset)
if(ORBE_LOGURU_SUBSET)
    set(ORBE_LOGURU_FLAVOUR "subset")
    add_library(loguru::loguru ALIAS orbe_loguru_subset)
else()
    find_package(loguru CONFIG QUIET)
    if(TARGET loguru::loguru)
        set(ORBE_LOGURU_FLAVOUR "package")
    else()
        find_package(VTK 9.1 QUIET COMPONENTS loguru)
        if(NOT TARGET VTK::loguru)
            message(FATAL_ERROR "There is no loguru package (Debian package libvtk9-dev); "
                "with -DORBE_LOGURU_SUBSET=ON the library logs without one")
        endif()
        set(ORBE_LOGURU_FLAVOUR "vtk")
        set(orbe_loguru_shim_dir ${PROJECT_BINARY_DIR}/loguru_shim)
        file(CONFIGURE OUTPUT ${orbe_loguru_shim_dir}/loguru.hpp
            CONTENT "#pragma once\n#include <vtk_loguru.h>\n" @ONLY)
        add_library(orbe_loguru_vtk INTERFACE)
        target_include_directories(orbe_loguru_vtk SYSTEM INTERFACE ${orbe_loguru_shim_dir})
        target_link_libraries(orbe_loguru_vtk INTERFACE VTK::loguru)
        add_library(loguru::loguru ALIAS orbe_loguru_vtk)
    endif()
endif()
message(STATUS "loguru: ${ORBE_LOGURU_FLAVOUR}")
