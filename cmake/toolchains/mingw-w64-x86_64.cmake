# Builds for 64-bit Windows with mingw-w64's GCC (Debian package g++-mingw-w64-x86-64-posix: the flavour whose
# standard library has threads). Everything is linked statically, so that a program or DLL needs nothing but
# Windows itself. Programs run under Wine, in a prefix that lies in the build directory.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(orbe_mingw_target x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${orbe_mingw_target}-gcc-posix)
set(CMAKE_CXX_COMPILER ${orbe_mingw_target}-g++-posix)
set(CMAKE_RC_COMPILER ${orbe_mingw_target}-windres)

set(CMAKE_EXE_LINKER_FLAGS_INIT -static)
set(CMAKE_SHARED_LINKER_FLAGS_INIT -static)

# Nothing of the machine that builds goes into what is built.
set(CMAKE_FIND_ROOT_PATH /usr/${orbe_mingw_target})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
# But a host's build may name where the package of the library lies (BOTH).
if(NOT DEFINED CMAKE_FIND_ROOT_PATH_MODE_PACKAGE)
    set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
endif()

set(CMAKE_CROSSCOMPILING_EMULATOR
    "${CMAKE_CURRENT_LIST_DIR}/../../scripts/run_under_wine.sh" "${CMAKE_BINARY_DIR}/wine")
