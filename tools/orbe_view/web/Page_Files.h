// Program orbe-view, web. The files of the page, which are a part of the program. Any thread; nothing blocks.
#pragma once

#include <span>
#include <string_view>

namespace Pelgar::ORBE::view {

struct Page_File {
    std::string_view path; // "/view.css"
    std::string_view type; // "text/css; charset=utf-8"
    std::string_view content;
};

// Made by the build from the folder of the page.
std::span<const Page_File> page_files();

// "/" is the page itself. Null when there is none.
const Page_File* page_file(std::string_view path);

} // namespace Pelgar::ORBE::view
