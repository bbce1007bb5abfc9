# Writes NeuropixAPI_plain.h, the header for C: cmake -D... -P Plain_Header.cmake
#
# It is NeuropixAPI.h function by function, each under the name and with the types of its C twin: one file without
# namespaces, templates or macros that make declarations, so that compilers take it as it is, other readers of C headers
# find nothing but declarations below its #include lines, and the comments of NeuropixAPI.h serve its readers as well. Made anew whenever that changes,
# so that the two cannot drift apart.
#
# In:  SOURCE_DIR  the project
#      OUTPUT      the header
cmake_minimum_required(VERSION 3.25)

foreach(parameter SOURCE_DIR OUTPUT)
    if(NOT DEFINED ${parameter} OR "${${parameter}}" STREQUAL "")
        message(FATAL_ERROR "Plain_Header: ${parameter} is not given")
    endif()
endforeach()

file(READ ${SOURCE_DIR}/api/NeuropixAPI.h text)

# From the first line behind the includes.
string(FIND "${text}" "\n#if defined(_WIN32)" begin)
if(begin EQUAL -1 OR NOT text MATCHES "\nnamespace Neuropixels {\n.*\n} // namespace Neuropixels\n*$")
    message(FATAL_ERROR "Plain_Header: NeuropixAPI.h has not the parts that it used to have")
endif()
string(SUBSTRING "${text}" ${begin} -1 text)

# Types: names without their keyword, pointers for references; that the sizes are those of C++ is for tests to see.
string(REPLACE "\nnamespace Neuropixels {\n" "\n#ifdef __cplusplus\nextern \"C\" {\n#endif\n" text "${text}")
string(REGEX REPLACE "\n} // namespace Neuropixels\n*$" "\n#ifdef __cplusplus\n}\n#endif" text "${text}")
string(REGEX REPLACE "static_assert[^;]*;\n" "" text "${text}")
string(REGEX REPLACE "\n(enum|struct) ([A-Za-z0-9_]+) {([^}]*)};" "\ntypedef \\1 \\2 {\\3} \\2;" text "${text}")
string(REPLACE "const np_packet_t&" "const np_packet_t*" text "${text}")

# Functions. C has no std::string: such a text goes into a buffer.
string(REGEX REPLACE "NP_EXPORT std::string ([A-Za-z0-9_]+)\\(\\);" "NP_EXPORT NP_ErrorCode \\1(char* text, size_t len);"
    text "${text}")
string(REGEX REPLACE "\nNP_EXPORT ([^;(]*[ *\n])([A-Za-z_][A-Za-z0-9_]*)\\(" "\nNP_EXPORT \\1np_\\2(" text "${text}")
string(REPLACE "();" "(void);" text "${text}")
string(REGEX REPLACE "\n(                    +[^ ])" "\n   \\1" text "${text}") # the parameters under each other
string(REGEX REPLACE "\n\n\n+" "\n\n" text "${text}")

# Twins that do not call their functions. (Whose result is none, that function does nothing else either.)
file(STRINGS ${SOURCE_DIR}/api/NeuropixAPI_Functions.inc rows REGEX "^NP_[A-Z_]+OWN_TWIN\\(NP_ErrorCode,")
foreach(row IN LISTS rows)
    string(REGEX REPLACE "^[^,]*, ([A-Za-z0-9_]+).*" "np_\\1" twin "${row}")
    set(before "${text}")
    string(REPLACE "\nNP_EXPORT NP_ErrorCode ${twin}("
        "\n// This one calls nothing: it is logged, writes nothing and returns 0.\nNP_EXPORT NP_ErrorCode ${twin}("
        text "${text}")
    if(text STREQUAL before)
        message(FATAL_ERROR "Plain_Header: ${twin} was not found")
    endif()
endforeach()

file(CONFIGURE OUTPUT ${OUTPUT} @ONLY NEWLINE_STYLE UNIX CONTENT [=[
// The Neuropixels API, version 3, as this library presents it, for C and for what reads C headers: one
// basestation in slot 0 with four probe ports, numbered 1 to 4, and the auxiliary ADC inputs of the box's RHD
// headstage. Every function is here under its plain name, np_ and its name in C++; the comments name functions
// without the np_. Made from NeuropixAPI.h, which is the header for C++.
//
// Errors: functions that return NP_ErrorCode answer SUCCESS (0) when the call was carried out and FAILED (1)
// when the operation on the box failed or no basestation is open; np_openBS alone answers 5 when the box or the
// recording cannot be brought up. Functions under "Not supported" are logged, write nothing and answer
// NOTSUPPORTED (0xFE). Null output pointers are skipped.
//
// A port outside 1 to 4 where a comment says that the function throws ends a process that is written in C.
#ifndef NEUROPIXAPI_PLAIN_H
#define NEUROPIXAPI_PLAIN_H

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>
#include <time.h>
@text@

#endif
]=])
