# cmake -D... -P Dependencies_Test.cmake: fails when docs/dependencies.md is not what the build uses.
#
# In:  SOURCE_DIR  the project's
#      BINARIES    the library and the programs for Linux, or none
#      READELF     shows what they load
#      SBOM        a bill of materials is written here and looked at
cmake_minimum_required(VERSION 3.25)
include(${SOURCE_DIR}/cmake/Dependency_Table.cmake)

set(problems 0)
function(complain text)
    message(NOTICE "${text}")
    math(EXPR problems "${problems} + 1")
    set(problems ${problems} PARENT_SCOPE)
endfunction()

find_program(DPKG_QUERY dpkg-query)
set(packages "")
set(loaded "")
orbe_read_dependencies(${SOURCE_DIR}/docs/dependencies.md count)
if(count LESS 20)
    message(FATAL_ERROR "docs/dependencies.md has ${count} rows only")
endif()
foreach(row RANGE 1 ${count})
    orbe_dependency(${row} name version licence use package loaded_as reason)
    list(APPEND packages ${package})
    if(NOT use MATCHES "^(linux|windows|programs|bench|python|build|tests)$")
        complain("${name}: unknown use \"${use}\"")
    endif()
    if(NOT licence MATCHES "^[A-Z][A-Za-z0-9. -]+$" OR NOT reason)
        complain("${name}: no licence or no reason")
    endif()
    if(use MATCHES "^(linux|bench)$")
        string(REPLACE " " ";" names "${loaded_as}")
        list(APPEND loaded ${names})
    endif()

    # The version without Debian's epoch and revision; "or later" where Debian itself moves on within a release.
    set(installed "")
    if(DPKG_QUERY AND package)
        execute_process(COMMAND ${DPKG_QUERY} --show "--showformat=\${db:Status-Status} \${Version}" ${package}
            OUTPUT_VARIABLE installed ERROR_QUIET)
    endif()
    if(installed MATCHES "^installed ([0-9]+:)?([0-9.]*[0-9])")
        set(installed ${CMAKE_MATCH_2})
        if(version MATCHES "^(.*) or later$")
            if(installed VERSION_LESS CMAKE_MATCH_1)
                complain("${name}: version ${version} is listed, ${package} is ${installed}")
            endif()
        elseif(NOT installed STREQUAL version)
            complain("${name}: version ${version} is listed, ${package} is ${installed}")
        endif()
    endif()
endforeach()

# Whatever the scripts install.
file(READ ${SOURCE_DIR}/scripts/setup.sh text)
string(REGEX MATCH "packages='\n([^']*)'" text "${text}")
string(REGEX MATCHALL "[^\n]+" lines "${CMAKE_MATCH_1}")
list(LENGTH lines line_count)
if(line_count LESS 20)
    message(FATAL_ERROR "scripts/setup.sh names ${line_count} packages only")
endif()
foreach(line IN LISTS lines)
    string(REGEX MATCH "^[^ ]+" package "${line}")
    if(NOT package IN_LIST packages)
        complain("scripts/setup.sh installs ${package}, which docs/dependencies.md does not list")
    endif()
endforeach()

# Whatever the loader will be asked for, and nothing that is listed in vain.
set(needed "")
foreach(binary IN LISTS BINARIES)
    execute_process(COMMAND ${READELF} -dW ${binary} OUTPUT_VARIABLE text COMMAND_ERROR_IS_FATAL ANY)
    # A bracket that is open would keep a list together.
    string(REPLACE "[" "" text "${text}")
    string(REGEX MATCHALL "Shared library: [^]]*" matches "${text}")
    foreach(match IN LISTS matches)
        string(REPLACE "Shared library: " "" library "${match}")
        if(NOT library MATCHES "^libNeuropixAPI")
            list(APPEND needed ${library})
            if(NOT library IN_LIST loaded)
                complain("${binary} loads ${library}, which docs/dependencies.md does not list")
            endif()
        endif()
    endforeach()
endforeach()
if(BINARIES)
    foreach(library IN LISTS loaded)
        if(NOT library IN_LIST needed AND NOT library MATCHES "^ld-linux")
            complain("docs/dependencies.md lists ${library}, which nothing loads")
        endif()
    endforeach()
endif()

# The bill of materials says the same, and says it twice in the same bytes.
set(ENV{SOURCE_DATE_EPOCH} 1700000000)
foreach(time IN ITEMS once again)
    execute_process(
        COMMAND ${CMAKE_COMMAND}
            -DTABLE=${SOURCE_DIR}/docs/dependencies.md
            -DVERSION=1.2.3
            "-DUSES=linux;windows;programs;bench;python"
            -DOUTPUT=${SBOM}.${time}
            -P ${SOURCE_DIR}/cmake/Write_Sbom.cmake
        COMMAND_ERROR_IS_FATAL ANY)
    file(READ ${SBOM}.${time} ${time})
endforeach()
if(NOT once STREQUAL again)
    complain("the bill of materials differs from one writing to the next")
endif()
string(JSON created GET "${once}" creationInfo created)
if(NOT created STREQUAL "2023-11-14T22:13:20Z")
    complain("the bill of materials was created at ${created}")
endif()
string(JSON listed LENGTH "${once}" packages)
string(JSON related LENGTH "${once}" relationships)
set(shipped 1)
foreach(row RANGE 1 ${count})
    orbe_dependency(${row} name version licence use package)
    if(use MATCHES "^(linux|windows|programs|bench|python)$")
        string(JSON entry_name GET "${once}" packages ${shipped} name)
        string(JSON entry_licence GET "${once}" packages ${shipped} licenseDeclared)
        string(JSON entry_version GET "${once}" packages ${shipped} versionInfo)
        if(NOT entry_name STREQUAL name OR NOT entry_licence STREQUAL licence OR
                NOT entry_version MATCHES "^([0-9]+:)?[0-9]")
            complain("the bill of materials says \"${entry_name}\" ${entry_version} \"${entry_licence}\" of ${name}")
        endif()
        math(EXPR shipped "${shipped} + 1")
    endif()
endforeach()
if(NOT listed EQUAL shipped OR NOT related EQUAL shipped)
    complain("the bill of materials lists ${listed} packages and ${related} relationships, and not ${shipped}")
endif()

if(problems)
    message(FATAL_ERROR "${problems} problems")
endif()
message(STATUS "${count} dependencies are as they are listed")
