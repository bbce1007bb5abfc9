# Reads docs/dependencies.md.

# orbe_read_dependencies(FILE COUNT): reads the rows of the table; COUNT is set to their number.
macro(orbe_read_dependencies file count)
    # Rows count from 1, as people count them.
    file(STRINGS ${file} orbe_dependency_rows REGEX "^\\| [^|]+ \\| [0-9]")
    list(LENGTH orbe_dependency_rows ${count})
    list(PREPEND orbe_dependency_rows heading)
endmacro()

# orbe_dependency(ROW FIELD...): sets the variables to the first fields of a row, from 1 on.
macro(orbe_dependency row)
    list(GET orbe_dependency_rows ${row} orbe_dependency_fields)
    string(REPLACE "|" ";" orbe_dependency_fields "${orbe_dependency_fields}")
    set(orbe_dependency_column 0)
    foreach(orbe_dependency_field IN ITEMS ${ARGN})
        math(EXPR orbe_dependency_column "${orbe_dependency_column} + 1")
        list(GET orbe_dependency_fields ${orbe_dependency_column} orbe_dependency_text)
        string(STRIP "${orbe_dependency_text}" ${orbe_dependency_field})
    endforeach()
endmacro()
