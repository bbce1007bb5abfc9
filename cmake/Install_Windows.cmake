# What a package for Windows holds beyond the library, its header and the programs: the import library of the other
# kind of linker, a short guide, and the licences of what the compiler linked in.
get_property(orbe_import_library GLOBAL PROPERTY ORBE_IMPORT_LIBRARY_MSVC)
install(FILES ${orbe_import_library} DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Development)

configure_file(${PROJECT_SOURCE_DIR}/packaging/windows/GUIDE.txt.in ${PROJECT_BINARY_DIR}/GUIDE.txt
    @ONLY NEWLINE_STYLE WIN32)
install(FILES ${PROJECT_BINARY_DIR}/GUIDE.txt DESTINATION . COMPONENT Runtime)

configure_file(${PROJECT_SOURCE_DIR}/packaging/windows/LICENSES.txt ${PROJECT_BINARY_DIR}/LICENSES.txt
    @ONLY NEWLINE_STYLE WIN32)
install(FILES ${PROJECT_BINARY_DIR}/LICENSES.txt DESTINATION licenses)

# The full texts come with the Debian packages of what is linked in. A build elsewhere takes them from where it has
# them.
if(MINGW)
    set(ORBE_LICENSE_DIR /usr/share CACHE PATH
        "Where the licences of the compiler's libraries lie, in the folders of Debian")
    set(orbe_view_licenses)
    if(ORBE_BUILD_TOOLS AND ORBE_BUILD_VIEW)
        # Boost's package has its version in its name.
        file(GLOB orbe_boost_license RELATIVE ${ORBE_LICENSE_DIR} ${ORBE_LICENSE_DIR}/doc/libboost1.*-dev/copyright)
        foreach(license IN LISTS orbe_boost_license)
            set(orbe_view_licenses boost.txt:${license})
        endforeach()
    endif()
    foreach(license IN ITEMS
            ${orbe_view_licenses}
            gcc.txt:doc/gcc-mingw-w64-base/copyright
            gpl-3.txt:common-licenses/GPL-3
            mingw-w64.txt:doc/mingw-w64-x86-64-dev/copyright
            cli11.txt:doc/libcli11-dev/copyright
            json.txt:doc/nlohmann-json3-dev/copyright)
        string(REPLACE ":" ";" license ${license})
        list(POP_FRONT license file source)
        set(text ${ORBE_LICENSE_DIR}/${source})
        if(EXISTS ${text})
            install(FILES ${text} DESTINATION licenses RENAME ${file} COMPONENT Runtime)
        else()
            message(WARNING "The package will lack ${file}: there is no ${text}")
        endif()
    endforeach()
endif()
