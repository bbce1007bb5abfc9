// Layer: device controller. A box's configuration flash: the FPGA's designs and the hardware record. Called
// on the host's threads; erasing and writing poll for up to 480 s a sector. What goes wrong is printed; an
// operation that fails may leave the flash partly erased or written.
#pragma once

#include "flash/Flash_Progress.h"
#include "flash/ORBE_HW_Info.h"

#include <memory>

namespace Pelgar::ORBE {

class Box_Connection;

class Box_Flash {
public:
    // `box` must outlive the object.
    explicit Box_Flash(Box_Connection& box) : m_box(box) {}

    // Erases as many 64 KiB sectors from byte `address`, the beginning of one, as the file takes and writes
    // the file's whole pieces of 16 bytes, over the hardware record too. False, with the flash left as it
    // was, for a file that cannot be opened or would run past the end of the flash.
    bool program_flash(const char* path, unsigned address, const Flash_Progress_Listener& listener);

    // The record; nothing when the flash cannot be read.
    std::unique_ptr<ORBE_HW_Info> read_ORBE_HW_info();

    // Replaces the record. Of its sector the first 256 bytes survive, the record's own place apart.
    bool program_ORBE_HW_info(const ORBE_HW_Info& info);

private:
    Box_Connection& m_box;
};

} // namespace Pelgar::ORBE
