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
    explicit Box_Flash(const Box_Connection& box) : m_box(box) {}

    // What these do is said with the operations of the same names in `ORBE_Controller_Library`.
    bool program_flash(const char* path, unsigned address, const Flash_Progress_Listener& listener);
    std::unique_ptr<ORBE_HW_Info> read_ORBE_HW_info();
    bool program_ORBE_HW_info(const ORBE_HW_Info& info);

private:
    const Box_Connection& m_box;
};

} // namespace Pelgar::ORBE
