// A host in the ABI of Windows' main compiler. What a host can do while no basestation is open: looks at the
// address of every exported function, then calls all of them but openBS, each under the name that this
// compiler gives it and under that of its C twin.
#pragma once

namespace Pelgar::ORBE::host {

// Prints what is not as it should be, and answers whether nothing was. One thread; does not block.
bool run_foreign_calls();

} // namespace Pelgar::ORBE::host
