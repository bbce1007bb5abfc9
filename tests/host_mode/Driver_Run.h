// Test support, host mode. An acquisition program's runs on a driver that brings one recording as fast as it
// is read and then nothing: on whatever stands for the driver's devices.
#pragma once

#include "generator/Recording_Generator.h"

#include <functional>

namespace Pelgar::ORBE::test {

// What the driver has to bring.
recording::Recording_Options driver_run_options();

// Opens the box as a PXI basestation with four ports, and then as a USB device with two and the ADC inputs.
// Each time several runs are made, with a reading thread a port: whole ones, of which one has its settings
// changed while data stream, some that are stopped at a random moment, and one whose reader is ended by force
// where that leaves the process as it is. `rewind` has the driver begin anew; it is called while the box does
// not stream. What is not as it should be is a failure of the test.
void run_on_driver(const std::function<void()>& rewind);

} // namespace Pelgar::ORBE::test
