# What `cmake --install` and `cpack` deliver: the shared library, its public header, the CMake package that finds
# both (NeuropixAPI::NeuropixAPI), and the programs for people. Included last, when all targets are known.
if(NOT TARGET NeuropixAPI)
    return()
endif()

include(CMakePackageConfigHelpers)
set(orbe_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/NeuropixAPI)

install(TARGETS NeuropixAPI
    EXPORT NeuropixAPITargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
    INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES
    ${PROJECT_SOURCE_DIR}/api/NeuropixAPI.h
    ${PROJECT_SOURCE_DIR}/api/NeuropixAPI_C.h
    ${PROJECT_SOURCE_DIR}/api/NeuropixAPI_Functions.inc
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT NeuropixAPITargets NAMESPACE NeuropixAPI:: DESTINATION ${orbe_package_dir})

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
    DESTINATION ${orbe_package_dir})

# The programs find the library beside themselves, wherever the prefix lies.
if(ORBE_BUILD_TOOLS)
    get_property(orbe_programs DIRECTORY ${PROJECT_SOURCE_DIR}/tools PROPERTY BUILDSYSTEM_TARGETS)
    foreach(program IN LISTS orbe_programs)
        get_target_property(type ${program} TYPE)
        if(type STREQUAL "EXECUTABLE")
            set_target_properties(${program} PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
            install(TARGETS ${program} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
        endif()
    endforeach()
endif()

if(WIN32)
    include(Install_Windows)
    set(CPACK_GENERATOR ZIP)
else()
    set(CPACK_GENERATOR TGZ)
endif()
set(CPACK_PACKAGE_NAME neuropixapi-orbe)
set(CPACK_PACKAGE_VENDOR "The ORBE project")
set(CPACK_PACKAGE_CONTACT "The ORBE project")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
# A Debian package states the packages that its binaries need; finding them out takes dpkg-shlibdeps.
find_program(ORBE_DPKG_SHLIBDEPS dpkg-shlibdeps)
mark_as_advanced(ORBE_DPKG_SHLIBDEPS)
if(ORBE_DPKG_SHLIBDEPS AND CMAKE_SYSTEM_NAME STREQUAL "Linux")
    list(APPEND CPACK_GENERATOR DEB)
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
endif()
include(CPack)
