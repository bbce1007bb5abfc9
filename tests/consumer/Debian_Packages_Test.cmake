# cmake -D... -P Debian_Packages_Test.cmake: fails when the Debian packages do not hold what they should, or ask for
# more than they may.
#
# In:  PACKAGES  the folder in which cpack has left them
#      OUTPUT    a folder into which they are unpacked, each into its own: runtime, development, bench and python
cmake_minimum_required(VERSION 3.25)
find_program(DPKG_DEB dpkg-deb REQUIRED)
find_program(READELF readelf REQUIRED)

# The run time of C and C++, and nothing else.
set(run_time libc6 libgcc-s1 libstdc++6)

function(unpack part pattern)
    file(GLOB package ${PACKAGES}/${pattern})
    list(LENGTH package count)
    if(NOT count EQUAL 1)
        message(FATAL_ERROR "${count} packages are called ${pattern} in ${PACKAGES}")
    endif()
    file(REMOVE_RECURSE ${OUTPUT}/${part})
    file(MAKE_DIRECTORY ${OUTPUT})
    execute_process(COMMAND ${DPKG_DEB} --extract ${package} ${OUTPUT}/${part} COMMAND_ERROR_IS_FATAL ANY)
    execute_process(COMMAND ${DPKG_DEB} --field ${package} Depends
        OUTPUT_VARIABLE depends OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    string(REGEX REPLACE " *\\([^)]*\\)" "" depends "${depends}")
    string(REGEX REPLACE " *, *" ";" depends "${depends}")
    set(${part}_depends "${depends}" PARENT_SCOPE)
    set(${part}_package ${package} PARENT_SCOPE)
endfunction()

function(expect_depends part)
    set(expected ${ARGN})
    list(SORT expected)
    set(found ${${part}_depends})
    list(SORT found)
    if(NOT found STREQUAL expected)
        message(FATAL_ERROR "the ${part} package depends on \"${found}\" and not on \"${expected}\"")
    endif()
endfunction()

function(expect_files part there)
    foreach(pattern IN LISTS ARGN)
        file(GLOB found ${OUTPUT}/${part}/${pattern})
        if(there AND NOT found)
            message(FATAL_ERROR "the ${part} package holds no ${pattern}")
        elseif(NOT there AND found)
            message(FATAL_ERROR "the ${part} package holds ${found}")
        endif()
    endforeach()
endfunction()

unpack(runtime libneuropixapi-orbe3_*.deb)
unpack(development libneuropixapi-orbe-dev_*.deb)

unpack(bench neuropixapi-orbe-bench_*.deb)
unpack(python python3-orbe_*_all.deb)

expect_depends(runtime ${run_time})
expect_depends(development libneuropixapi-orbe3)
expect_depends(bench ${run_time} libbenchmark1debian)
expect_depends(python python3 python3-numpy libneuropixapi-orbe3)

set(runtime_files
    usr/lib/libNeuropixAPI.so usr/lib/libNeuropixAPI.so.3 usr/lib/libNeuropixAPI.so.3.*.*
    usr/bin/orbe-box usr/bin/orbe-play usr/bin/orbe-record usr/bin/orbe-recording usr/bin/orbe-view
    usr/share/doc/neuropixapi-orbe/uPlot-LICENSE.txt
    usr/share/doc/neuropixapi-orbe/README.md usr/share/doc/neuropixapi-orbe/docs/api-functions.md
    usr/share/doc/neuropixapi-orbe/sbom.spdx.json
    usr/share/doc/libneuropixapi-orbe3/copyright usr/share/doc/libneuropixapi-orbe3/sbom.spdx.json)
set(development_files
    usr/include/NeuropixAPI.h usr/include/NeuropixAPI_C.h usr/include/NeuropixAPI_plain.h
    usr/include/NeuropixAPI_Functions.inc
    usr/lib/pkgconfig/NeuropixAPI.pc usr/lib/cmake/NeuropixAPI/NeuropixAPIConfig.cmake
    usr/share/doc/libneuropixapi-orbe-dev/copyright usr/share/doc/libneuropixapi-orbe-dev/sbom.spdx.json)
set(bench_files
    usr/bin/orbe-bench
    usr/share/doc/neuropixapi-orbe-bench/copyright usr/share/doc/neuropixapi-orbe-bench/sbom.spdx.json)
set(python_files
    usr/bin/orbe usr/lib/python3/dist-packages/orbe/__init__.py usr/lib/python3/dist-packages/orbe/py.typed
    usr/lib/python3/dist-packages/orbe/plot/overview.py usr/share/doc/python3-orbe/copyright
    usr/share/doc/python3-orbe/sbom.spdx.json)
foreach(part runtime development bench python)
    foreach(other runtime development bench python)
        if(part STREQUAL other)
            expect_files(${part} TRUE ${${other}_files})
        else()
            expect_files(${part} FALSE ${${other}_files})
        endif()
    endforeach()
endforeach()

# What the loader will ask for in fact.
file(GLOB programs ${OUTPUT}/runtime/usr/bin/* ${OUTPUT}/runtime/usr/lib/libNeuropixAPI.so.3.*)
foreach(program IN LISTS programs)
    execute_process(COMMAND ${READELF} -d ${program} OUTPUT_VARIABLE text COMMAND_ERROR_IS_FATAL ANY)
    # A bracket that is open would keep a list together.
    string(REPLACE "[" "" text "${text}")
    string(REGEX MATCHALL "Shared library: [^]]*" libraries "${text}")
    if(NOT libraries)
        message(FATAL_ERROR "${program} needs no library at all?")
    endif()
    foreach(library IN LISTS libraries)
        string(REPLACE "Shared library: " "" library "${library}")
        if(NOT library MATCHES "^(libc|libm|libgcc_s|libstdc\\+\\+|libNeuropixAPI|ld-linux-x86-64)\\.so\\.[0-9]+$")
            message(FATAL_ERROR "${program} needs ${library}")
        endif()
    endforeach()
endforeach()
message(STATUS "the Debian packages are as they should be")
