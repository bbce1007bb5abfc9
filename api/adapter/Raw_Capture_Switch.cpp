#include "adapter/Raw_Capture_Switch.h"

#include "common/Host_Path.h"
#include "controller/C_ORBE_Controller_Library.h"
#include "rows/C_Async_PSB_And_RHD_Demux.h"

#include <loguru.hpp>

#include <exception>
#include <filesystem>
#include <system_error>

namespace Pelgar::ORBE::npoe_adapter {

std::optional<std::string> read_raw_capture_switch() {
    std::error_code failure;
    if (!std::filesystem::exists(raw_capture_switch, failure)) {
        return std::nullopt;
    }
    const std::string name = probe_file_switch(raw_capture_switch).first_line;
    return name.empty() ? demux::raw_data_file_name : name;
}

bool may_capture(const char* name, const std::string& file, const File_Switch& simulation) {
    if (simulation.present && is_same_file(simulation.first_line.c_str(), file.c_str())) {
        LOG_F(ERROR, "%s : %s cannot be played (%s) and captured into (%s) at once", name, file.c_str(),
              simulation_switch, raw_capture_switch);
        return false;
    }
    return true;
}

bool start_capture(const char* name, ORBE_Controller_Library& controller, const std::string& file) {
    try {
        controller.capture_raw_data(file);
        return true;
    } catch (const std::exception& exception) {
        LOG_F(ERROR, "%s : no raw capture, %s", name, exception.what());
        return false;
    }
}

} // namespace Pelgar::ORBE::npoe_adapter
