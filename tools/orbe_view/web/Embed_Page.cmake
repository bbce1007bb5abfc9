# Writes the source that holds the files of the page. FILES is a list, with commas, of "name|path" pairs, the name as
# browsers ask for it; OUTPUT is written.
set(types
    "html|text/html\\; charset=utf-8"
    "css|text/css\\; charset=utf-8"
    "js|text/javascript\\; charset=utf-8"
    "svg|image/svg+xml"
    "txt|text/plain\\; charset=utf-8")
string(REPLACE "," ";" FILES "${FILES}")
set(contents)
set(table)
set(number 0)
foreach(file IN LISTS FILES)
    string(REPLACE "|" ";" pair "${file}")
    list(GET pair 0 name)
    list(GET pair 1 path)
    cmake_path(GET name EXTENSION LAST_ONLY extension)
    string(SUBSTRING "${extension}" 1 -1 extension)
    set(type "application/octet-stream")
    foreach(candidate IN LISTS types)
        string(REGEX MATCH "^${extension}[|](.*)$" found "${candidate}")
        if(found)
            set(type "${CMAKE_MATCH_1}")
        endif()
    endforeach()
    file(READ ${path} bytes HEX)
    string(REGEX REPLACE "(................................................................)" "\\1\n" bytes "${bytes}")
    string(REGEX REPLACE "([0-9a-f][0-9a-f])" "'\\\\x\\1'," bytes "${bytes}")
    string(APPEND contents "constexpr char file_${number}[] = {\n${bytes}'\\0'};\n\n")
    string(APPEND table "    {\"${name}\", \"${type}\", {file_${number}, sizeof(file_${number}) - 1}},\n")
    math(EXPR number "${number} + 1")
endforeach()
file(WRITE ${OUTPUT} "// Made by the build from the files of the page.
#include \"web/Page_Files.h\"

namespace Pelgar::ORBE::view {

namespace {

${contents}constexpr Page_File files[] = {
${table}};

} // namespace

std::span<const Page_File> page_files() {
    return files;
}

} // namespace Pelgar::ORBE::view
")
