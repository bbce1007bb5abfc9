# Writes the bill of materials of the packages, SPDX 2.3 in JSON: what docs/dependencies.md lists for the platform, with
# the Debian versions of the machine that packs where it has them. Runs when the library is installed or packed. The same
# input makes the same bytes; the time is SOURCE_DATE_EPOCH, or that of the last commit.
#
# In:  TABLE     docs/dependencies.md
#      VERSION   of the library
#      USES      of the table: linux, windows, programs, bench, python
#      OUTPUT    the file
cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/Dependency_Table.cmake)
include(${CMAKE_CURRENT_LIST_DIR}/Source_Date.cmake)

function(orbe_sbom_package result id name version licence comment)
    set(${result} "{
      \"SPDXID\": \"SPDXRef-${id}\",
      \"name\": \"${name}\",
      \"versionInfo\": \"${version}\",
      \"downloadLocation\": \"NOASSERTION\",
      \"filesAnalyzed\": false,
      \"licenseConcluded\": \"NOASSERTION\",
      \"licenseDeclared\": \"${licence}\",
      \"copyrightText\": \"NOASSERTION\",
      \"comment\": \"${comment}\"
    }" PARENT_SCOPE)
endfunction()

orbe_source_date(seconds)
if(seconds)
    set(ENV{SOURCE_DATE_EPOCH} ${seconds})
endif()
string(TIMESTAMP created "%Y-%m-%dT%H:%M:%SZ" UTC)

orbe_sbom_package(packages NeuropixAPI neuropixapi-orbe ${VERSION} NOASSERTION "this library and its programs")
set(relationships "{
      \"spdxElementId\": \"SPDXRef-DOCUMENT\",
      \"relationshipType\": \"DESCRIBES\",
      \"relatedSpdxElement\": \"SPDXRef-NeuropixAPI\"
    }")
find_program(DPKG_QUERY dpkg-query)
orbe_read_dependencies(${TABLE} count)
foreach(row RANGE 1 ${count})
    orbe_dependency(${row} name version licence use package loaded_as)
    if(NOT use IN_LIST USES)
        continue()
    endif()
    if(DPKG_QUERY AND package)
        execute_process(COMMAND ${DPKG_QUERY} --show "--showformat=\${Version}" ${package}
            OUTPUT_VARIABLE installed ERROR_QUIET)
        if(installed)
            set(version ${installed})
        endif()
    endif()
    # What has no package of Debian's was taken by npm.
    set(origin "Debian package ${package}")
    set(id ${package})
    if(NOT package)
        set(origin "package ${name} of npm")
        set(id ${name})
    endif()
    string(REGEX REPLACE "[^A-Za-z0-9.-]" "-" id ${id})
    if(use MATCHES "^(linux|bench|python)$")
        set(kind DYNAMIC_LINK)
        set(comment "${origin}, loaded at run time")
    else()
        set(kind STATIC_LINK)
        set(comment "${origin}, linked in")
    endif()
    orbe_sbom_package(entry ${id} "${name}" "${version}" "${licence}" "${comment}")
    string(APPEND packages ", ${entry}")
    string(APPEND relationships ", {
      \"spdxElementId\": \"SPDXRef-NeuropixAPI\",
      \"relationshipType\": \"${kind}\",
      \"relatedSpdxElement\": \"SPDXRef-${id}\"
    }")
endforeach()

string(SHA256 digest "${packages}")
file(WRITE ${OUTPUT} "{
  \"spdxVersion\": \"SPDX-2.3\",
  \"dataLicense\": \"CC0-1.0\",
  \"SPDXID\": \"SPDXRef-DOCUMENT\",
  \"name\": \"neuropixapi-orbe-${VERSION}\",
  \"documentNamespace\": \"urn:neuropixapi-orbe:${VERSION}:${digest}\",
  \"creationInfo\": {
    \"created\": \"${created}\",
    \"creators\": [\"Organization: The ORBE project\", \"Tool: cmake-${CMAKE_VERSION}\"]
  },
  \"packages\": [${packages}],
  \"relationships\": [${relationships}]
}
")
