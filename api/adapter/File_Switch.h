// Layer: façade. Switches that a host sets by putting a file into the working directory. Called on the host's
// threads; blocks for the file system only.
#pragma once

#include <string>

namespace Pelgar::ORBE::npoe_adapter {

// Present: simulation mode; the first line names the recorded raw DMA file.
inline constexpr const char* simulation_switch = "ORBE_DFGMZ_ADAPTER_SIM";

// Present: the first line is the number of the probe initialisation mode.
inline constexpr const char* init_mode_switch = "ORBE_NP_INIT_MODE";

struct File_Switch {
    std::string first_line; // without its line end and blanks before that
    bool present = false;
};

// Looks for a switch file. A byte-order mark is skipped; what an editor or a shell has saved as UTF-16 is
// read as far as it is ASCII, with "?" for every other character. Every look also leaves the marker file
// "ORBE_DFGMZ_ADAPTER_SI" in the working directory, which tells the user where the switch files belong.
File_Switch probe_file_switch(const std::string& name);

} // namespace Pelgar::ORBE::npoe_adapter
