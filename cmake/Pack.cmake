# What `cpack` packs: a tarball and Debian packages for Linux, a zip for Windows. They lie in packages/ of the build,
# wherever cpack is called.
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_PACKAGE_NAME neuropixapi-orbe)
set(CPACK_PACKAGE_VENDOR "The ORBE project")
set(CPACK_PACKAGE_CONTACT "The ORBE project")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_STRIP_FILES ON)

# The same sources make the same packages, wherever and whenever they are packed.
configure_file(${PROJECT_SOURCE_DIR}/cmake/Pack_Time.cmake.in ${PROJECT_BINARY_DIR}/Pack_Time.cmake @ONLY)
set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_BINARY_DIR}/Pack_Time.cmake)
if(WIN32)
    set(CPACK_GENERATOR ZIP)
else()
    set(CPACK_GENERATOR TGZ)
endif()

# A Debian package states the packages that its binaries need; finding them out takes dpkg-shlibdeps (Debian package
# dpkg-dev) and file.
find_program(ORBE_DPKG_SHLIBDEPS dpkg-shlibdeps)
find_program(ORBE_FILE file)
mark_as_advanced(ORBE_DPKG_SHLIBDEPS ORBE_FILE)
if(ORBE_DPKG_SHLIBDEPS AND ORBE_FILE AND CMAKE_SYSTEM_NAME STREQUAL "Linux")
    include(Pack_Debian)
endif()
include(CPack)
