// Test support, host mode. An acquisition program's run on a driver that brings one recording as fast as it
// is read and then nothing: on whatever stands for the driver's devices.
#pragma once

#include "generator/Recording_Generator.h"

namespace Pelgar::ORBE::test {

// What the driver has to bring.
recording::Recording_Options driver_run_options();

// Opens the box as a PXI basestation, triggers, reads every packet of the stream from all four ports, arms
// and closes. What is not as it should be is a failure of the test.
void run_on_driver();

} // namespace Pelgar::ORBE::test
