#include "web/Page_Files.h"

namespace Pelgar::ORBE::view {

const Page_File* page_file(std::string_view path) {
    if (path == "/") {
        path = "/index.html";
    }
    for (const Page_File& file : page_files()) {
        if (file.path == path) {
            return &file;
        }
    }
    return nullptr;
}

} // namespace Pelgar::ORBE::view
