// Test support. Makes the two files of a host's run: a recording, and what a host must receive from it.
// So many packets that the library's queues hold them all, so that nothing depends on how fast the host
// reads.
#pragma once

#include <filesystem>

namespace Pelgar::ORBE::host {

// Writes both files. The recording has four ports and the RHD headstage, and is a whole number of MiB long.
// Throws std::runtime_error when a file cannot be written, or when the recording does not yield what the
// run needs.
void make_host_road_data(const std::filesystem::path& recording, const std::filesystem::path& expectation);

} // namespace Pelgar::ORBE::host
