// A host in the ABI of Windows' main compiler. Counts what is not as it should be.
#pragma once

namespace Pelgar::ORBE::host {

// Prints the function's name and what is wrong with it, unless it is good.
void expect(bool good, const char* function, const char* what_is_wrong);

bool everything_was_good();

} // namespace Pelgar::ORBE::host
