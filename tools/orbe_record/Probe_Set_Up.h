// Program orbe-record. Brings the probe on a port up as the user wants it, and describes it. Main thread;
// blocks on the probe's link.
#pragma once

#include "Record_Options.h"
#include "description/Recording_Description.h"

namespace Pelgar::ORBE::recorder {

// The gains that a probe knows, by their codes.
inline constexpr std::array<int, 8> gains{50, 125, 250, 500, 1000, 1500, 2000, 3000};

// Where the gain calibration of a probe lies in the folder of calibrations.
std::filesystem::path gain_calibration_file(const std::filesystem::path& calibrations,
                                            std::uint64_t serial_number);

// In the slot of the box's basestation, which is open. Throws std::runtime_error with what went wrong, on
// which port, and what can be done about it.
Probe_Description set_up_probe(int slot, int port, const Probe_Options& options, bool is_simulation);

} // namespace Pelgar::ORBE::recorder
