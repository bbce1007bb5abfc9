# What is shipped is compiled and linked so that a fault of its own, or a damaged stream, is hard to make use of. One
# interface target, `orbe_hardening`, carries it for the library and the programs; tests are not shipped. Builds that do
# not optimise, and sanitizers, which look further, go without.
add_library(orbe_hardening INTERFACE)

# Programs are placed at random addresses as libraries are.
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)

include(CheckCXXCompilerFlag)
check_cxx_compiler_flag(-fcf-protection=full ORBE_HAS_CF_PROTECTION)

set(orbe_hardened $<NOT:$<CONFIG:Debug>>)
if(ORBE_SANITIZE)
    set(orbe_hardened 0)
endif()
if(NOT MSVC)
    target_compile_options(orbe_hardening INTERFACE
        $<${orbe_hardened}:-fstack-protector-strong>
        $<${orbe_hardened}:-U_FORTIFY_SOURCE> $<${orbe_hardened}:-D_FORTIFY_SOURCE=2>
        $<$<AND:${orbe_hardened},$<BOOL:${ORBE_HAS_CF_PROTECTION}>>:-fcf-protection=full>)
endif()
if(WIN32 AND NOT MSVC)
    # The last one keeps the time of the link out of the file.
    target_link_options(orbe_hardening INTERFACE
        -Wl,--dynamicbase -Wl,--high-entropy-va -Wl,--nxcompat -Wl,--no-insert-timestamp
        $<${orbe_hardened}:-fstack-protector-strong>)
elseif(CMAKE_SYSTEM_NAME STREQUAL "Linux")
    target_link_options(orbe_hardening INTERFACE -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
endif()
