# One interface target, `orbe_options`, carries the warnings and sanitizers that every target of this
# project is compiled with.
add_library(orbe_options INTERFACE)

if(MSVC)
    # The functions with C linkage let exceptions through; CMake's own /EHsc lets the compiler take them for functions
    # that throw nothing.
    string(REPLACE "/EHsc" "/EHs" CMAKE_CXX_FLAGS "${CMAKE_CXX_FLAGS}")
    target_compile_options(orbe_options INTERFACE /W4 /permissive- /utf-8 /Zc:__cplusplus
        # Exported classes have members of the standard library's: their users link to the same one anyway.
        /wd4251 /wd4275
        $<$<BOOL:${ORBE_WARNINGS_AS_ERRORS}>:/WX>)
    target_compile_definitions(orbe_options INTERFACE _CRT_SECURE_NO_WARNINGS)
else()
    target_compile_options(orbe_options INTERFACE
        -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor
        -Wold-style-cast -Woverloaded-virtual -Wcast-align -Wnull-dereference -Wundef
        $<$<BOOL:${ORBE_WARNINGS_AS_ERRORS}>:-Werror>
        # GCC 12 sees overlapping copies in inlined string concatenation where there are none.
        $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
        # Log lines name the source file as it lies in the project, wherever it was built; the folder of the build
        # leaves no trace either.
        -ffile-prefix-map=${PROJECT_SOURCE_DIR}/= -ffile-prefix-map=${PROJECT_BINARY_DIR}/=build/)
endif()

if(WIN32)
    # What <windows.h> defines is kept to what is used.
    target_compile_definitions(orbe_options INTERFACE NOMINMAX WIN32_LEAN_AND_MEAN)
endif()

if(ORBE_SANITIZE)
    target_compile_options(orbe_options INTERFACE
        -fsanitize=${ORBE_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all
        # GCC 12 sees uninitialised values in the standard library's <regex> when it is instrumented.
        $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
    target_link_options(orbe_options INTERFACE -fsanitize=${ORBE_SANITIZE})
endif()

# GCC takes what it inlines from the argument parser for null pointers when sanitizers are on.
function(orbe_forgive_argument_parser)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        set_source_files_properties(${ARGN} PROPERTIES COMPILE_OPTIONS -Wno-null-dereference)
    endif()
endfunction()
