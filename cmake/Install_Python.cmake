# The Python package, and the command that comes with it. It finds the library in the same prefix.
set(ORBE_PYTHON_DIR lib/python3/dist-packages CACHE STRING "Where the Python package goes, below the prefix")
mark_as_advanced(ORBE_PYTHON_DIR)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/python/orbe
    DESTINATION ${ORBE_PYTHON_DIR}
    COMPONENT Python
    FILES_MATCHING PATTERN "*.py" PATTERN "py.typed"
    PATTERN "__pycache__" EXCLUDE)

file(RELATIVE_PATH orbe_python_from_bin /${CMAKE_INSTALL_BINDIR} /${ORBE_PYTHON_DIR})
configure_file(${PROJECT_SOURCE_DIR}/python/orbe.in ${PROJECT_BINARY_DIR}/python/orbe @ONLY)
install(PROGRAMS ${PROJECT_BINARY_DIR}/python/orbe DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT Python)
