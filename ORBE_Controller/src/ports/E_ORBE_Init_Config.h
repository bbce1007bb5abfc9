// Layer: device controller. How a probe is initialised; a host chooses by number.
#pragma once

namespace Pelgar::ORBE {

enum class E_ORBE_Init_Config : int {
    quick = 0,        // power the link up and nothing else
    full = 1,         // recording mode with the default configuration; so is every number not listed here
    psb_test = 2,     // full, then the probe sends its test pattern
    channel_test = 3, // full, then the test signal goes into the channels
    pixel_test = 4    // full, then the test signal goes into the pixels
};

} // namespace Pelgar::ORBE
