// Layer: device controller. The two self tests that run on a controller's stream, as functions for programs
// that own a controller. Called on the host's threads; block while the test lasts.
#pragma once

#include "common/Export.h"
#include "resources/Resource_Directory.h"

#include <string>

namespace Pelgar::ORBE {

class ORBE_Controller_Library;

// Whether the test pattern of the probe on a port (index 0..3) arrives on all channels; `run_psb_test`
// (bist/PSB_Self_Test.h) says how. Exceptions of the streaming functions pass through. In simulation mode the
// recording is looked for in `directory`.
ORBE_EXPORT bool execute_psb_test(ORBE_Controller_Library& controller, unsigned port,
                                  const std::string& directory = default_resource_directory());

// Whether the probe's test signal is seen on all channels; `run_signal_test` (bist/Signal_Self_Test.h) says
// how.
ORBE_EXPORT bool execute_bist_signal_test(ORBE_Controller_Library& controller, unsigned port,
                                          const std::string& directory = default_resource_directory());

} // namespace Pelgar::ORBE
