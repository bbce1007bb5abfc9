#include "adapter/File_Switch.h"

#include "common/Console.h"

#include <fstream>

namespace Pelgar::ORBE::npoe_adapter {

namespace {

constexpr const char* marker_file = "ORBE_DFGMZ_ADAPTER_SI";

} // namespace

File_Switch probe_file_switch(const std::string& name) {
    std::ofstream(marker_file, std::ios::trunc) << "Test";

    std::ifstream file(name);
    if (!file) {
        console::out(name, " not present in working directory\n");
        return {};
    }
    console::out(name, " file present in working directory\n");
    File_Switch found{{}, true};
    std::getline(file, found.first_line);
    // A file written on another system may end its lines with a carriage return too.
    if (found.first_line.ends_with('\r')) {
        found.first_line.pop_back();
    }
    return found;
}

} // namespace Pelgar::ORBE::npoe_adapter
