# The Debian packages. The runtime one carries the library's SOVERSION in its name, as is custom there. It cannot be
# installed beside one of another SOVERSION, because both hold the unversioned name (Install_Package.cmake says why).
list(APPEND CPACK_GENERATOR DEB)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL Runtime Development Benchmark Python)
if(NOT ORBE_BUILD_BENCHMARKS)
    list(REMOVE_ITEM CPACK_COMPONENTS_ALL Benchmark)
endif()
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
# They used to be one package.
set(CPACK_DEBIAN_PACKAGE_CONFLICTS neuropixapi-orbe)
set(CPACK_DEBIAN_PACKAGE_REPLACES neuropixapi-orbe)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libneuropixapi-orbe${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
    "The shared library that hosts load, the programs for the bench and the documentation.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libneuropixapi-orbe-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
    "${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME} (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
    "What building a host takes: headers, and what CMake and pkg-config find the library by.")

# Google Benchmark is a shared library on Debian; a package of its own keeps it from the other two.
set(CPACK_DEBIAN_BENCHMARK_PACKAGE_NAME neuropixapi-orbe-bench)
set(CPACK_DEBIAN_BENCHMARK_PACKAGE_SECTION science)
set(CPACK_COMPONENT_BENCHMARK_DESCRIPTION "orbe-bench, which measures how fast the library is on a machine.")

set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-orbe)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS
    "python3 (>= 3.9), python3-numpy, ${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_PYTHON_PACKAGE_RECOMMENDS python3-matplotlib)
set(CPACK_COMPONENT_PYTHON_DESCRIPTION
    "The box and its recordings in Python: live samples, recorded folders, raw files, pictures.")

# What Debian wants to know of each package: what is in it and on which terms. The bill of materials lies beside it.
set(orbe_copyright ${PROJECT_BINARY_DIR}/copyright)
file(READ ${PROJECT_SOURCE_DIR}/packaging/debian/copyright orbe_copyright_text)
foreach(orbe_headers IN ITEMS libcli11-dev nlohmann-json3-dev)
    set(orbe_headers_copyright /usr/share/doc/${orbe_headers}/copyright)
    if(EXISTS ${orbe_headers_copyright})
        file(READ ${orbe_headers_copyright} orbe_headers_copyright_text)
        string(APPEND orbe_copyright_text "\n${orbe_headers_copyright_text}")
    else()
        message(WARNING "The Debian packages will lack terms: there is no ${orbe_headers_copyright}")
    endif()
endforeach()
if(ORBE_BUILD_TOOLS AND ORBE_BUILD_VIEW)
    # orbe-view contains more than the other programs. Boost's package has its version in its name.
    file(GLOB orbe_boost_copyright /usr/share/doc/libboost1.*-dev/copyright)
    string(APPEND orbe_copyright_text "
orbe-view also contains parts of Boost (Boost Software License), of which the Debian package says:

")
    foreach(orbe_terms IN LISTS orbe_boost_copyright)
        file(READ ${orbe_terms} orbe_terms_text)
        string(APPEND orbe_copyright_text "${orbe_terms_text}")
    endforeach()
    file(READ ${PROJECT_SOURCE_DIR}/tools/orbe_view/page/node_modules/uplot/LICENSE orbe_terms_text)
    string(APPEND orbe_copyright_text "\nand uPlot, on these terms:\n\n${orbe_terms_text}")
endif()
file(WRITE ${orbe_copyright} "${orbe_copyright_text}")
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
    string(TOUPPER ${component} COMPONENT)
    install(FILES ${orbe_copyright} ${orbe_sbom}
        DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${CPACK_DEBIAN_${COMPONENT}_PACKAGE_NAME}
        COMPONENT ${component})
endforeach()
