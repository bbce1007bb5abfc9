// Tools, recording library. Refuses faults that do not do what they seem to: those that strike nothing of the
// recording, and those that leave nothing of it. Any thread; never blocks.
#pragma once

#include "generator/Recording_Options.h"

namespace Pelgar::ORBE::recording {

// Throws std::invalid_argument with a text for the user. A fault may silence one of several streams.
// Positions count what a recording without faults holds; the options must be good otherwise.
void check_faults(const Recording_Options& options);

} // namespace Pelgar::ORBE::recording
