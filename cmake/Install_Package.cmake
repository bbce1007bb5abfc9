# What `cmake --install` delivers, in parts: Runtime, which is what a host needs that is already built, with the programs
# and the documentation; Development, which is what building a host takes; Benchmark; Python. Included when all targets are
# known.
include(CMakePackageConfigHelpers)
set(orbe_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/NeuropixAPI)

# The library's unversioned name belongs to Runtime: a host that is built against the published interface asks the
# loader for libNeuropixAPI.so by that name, without having been linked with this library, and must find it where nothing
# is developed.
install(TARGETS NeuropixAPI
    EXPORT NeuropixAPITargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Runtime NAMELINK_COMPONENT Runtime
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Development
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT Runtime
    INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
get_property(orbe_plain_header GLOBAL PROPERTY ORBE_PLAIN_HEADER)
install(FILES
    ${PROJECT_SOURCE_DIR}/api/NeuropixAPI.h
    ${PROJECT_SOURCE_DIR}/api/NeuropixAPI_C.h
    ${orbe_plain_header}
    ${PROJECT_SOURCE_DIR}/api/NeuropixAPI_Functions.inc
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
    COMPONENT Development)

# For hosts that are built with CMake ...
install(EXPORT NeuropixAPITargets
    NAMESPACE NeuropixAPI::
    DESTINATION ${orbe_package_dir}
    COMPONENT Development)
configure_package_config_file(
    ${PROJECT_SOURCE_DIR}/cmake/NeuropixAPIConfig.cmake.in
    ${PROJECT_BINARY_DIR}/NeuropixAPIConfig.cmake
    INSTALL_DESTINATION ${orbe_package_dir}
    NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/NeuropixAPIConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/NeuropixAPIConfig.cmake
    ${PROJECT_BINARY_DIR}/NeuropixAPIConfigVersion.cmake
    DESTINATION ${orbe_package_dir}
    COMPONENT Development)

# ... and for those that are not. The prefix follows from where the file lies, as in CMake's package.
set(orbe_pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH orbe_prefix_from_pkgconfig /${orbe_pkgconfig_dir} /)
configure_file(${PROJECT_SOURCE_DIR}/cmake/NeuropixAPI.pc.in ${PROJECT_BINARY_DIR}/NeuropixAPI.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/NeuropixAPI.pc DESTINATION ${orbe_pkgconfig_dir} COMPONENT Development)

# The programs find the library beside themselves, wherever the prefix lies.
function(orbe_install_programs folder component)
    get_property(targets DIRECTORY ${folder} PROPERTY BUILDSYSTEM_TARGETS)
    foreach(target IN LISTS targets)
        get_target_property(type ${target} TYPE)
        if(type STREQUAL "EXECUTABLE")
            set_target_properties(${target} PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
            install(TARGETS ${target} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT ${component})
        endif()
    endforeach()
endfunction()

if(ORBE_BUILD_TOOLS)
    orbe_install_programs(${PROJECT_SOURCE_DIR}/tools Runtime)
endif()
if(ORBE_BUILD_TOOLS AND ORBE_BUILD_VIEW)
    orbe_install_programs(${PROJECT_SOURCE_DIR}/tools/orbe_view Runtime)
endif()
if(ORBE_BUILD_BENCHMARKS)
    orbe_install_programs(${PROJECT_SOURCE_DIR}/bench Benchmark)
endif()

if(WIN32)
    set(orbe_doc_dir doc)
    include(Install_Windows)
else()
    set(orbe_doc_dir ${CMAKE_INSTALL_DATAROOTDIR}/doc/neuropixapi-orbe)
    include(Install_Python)
endif()

# The bill of materials, one for all parts, made when they are installed.
set(orbe_sbom ${PROJECT_BINARY_DIR}/sbom.spdx.json)
if(WIN32)
    set(orbe_sbom_uses windows programs)
else()
    set(orbe_sbom_uses linux programs bench python)
endif()
foreach(component IN ITEMS Runtime Development Benchmark Python)
    install(CODE "
        set(TABLE [[${PROJECT_SOURCE_DIR}/docs/dependencies.md]])
        set(VERSION ${PROJECT_VERSION})
        set(USES ${orbe_sbom_uses})
        set(OUTPUT [[${orbe_sbom}]])
        include([[${PROJECT_SOURCE_DIR}/cmake/Write_Sbom.cmake]])"
        COMPONENT ${component})
endforeach()
install(FILES ${orbe_sbom} DESTINATION ${orbe_doc_dir} COMPONENT Runtime)

install(FILES ${PROJECT_SOURCE_DIR}/README.md DESTINATION ${orbe_doc_dir} COMPONENT Runtime)
if(ORBE_BUILD_TOOLS AND ORBE_BUILD_VIEW)
    # Of the plotting library that orbe-view carries.
    install(FILES ${PROJECT_SOURCE_DIR}/tools/orbe_view/page/node_modules/uplot/LICENSE
        DESTINATION ${orbe_doc_dir} RENAME uPlot-LICENSE.txt COMPONENT Runtime)
endif()
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs DESTINATION ${orbe_doc_dir} COMPONENT Runtime)
