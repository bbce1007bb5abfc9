// A host in the ABI of Windows' main compiler. What arrives through the parameters of the functions whose
// answers are the same on every box: numbers of all sizes, texts and structures.
#pragma once

namespace Pelgar::ORBE::host {

// Calls them by both of their names and reports what is wrong by `expect`.
void look_at_known_values();

} // namespace Pelgar::ORBE::host
