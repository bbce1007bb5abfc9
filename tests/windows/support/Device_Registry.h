// Test support, Windows. The system's registry of devices, from which the library learns which boxes there
// are: a box is entered as an installed device with an active interface of the XDMA driver's class.
#pragma once

namespace Pelgar::ORBE::test {

// Boxes are numbered from 0. Throw std::system_error when the registry refuses.
void enter_box(unsigned number);
// Does nothing when the box is not there.
void remove_box(unsigned number);

} // namespace Pelgar::ORBE::test
