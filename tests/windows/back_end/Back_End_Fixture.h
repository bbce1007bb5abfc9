// Test support, Windows. A back-end on the stand-in driver, not open yet.
#pragma once

#include "Box_Environment.h"
#include "Printed.h"
#include "back_ends/CP_Win_ORBE_Controller.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>

namespace Pelgar::ORBE::test {

class Back_End_Fixture : public Box_Fixture {
protected:
    bool open() const { return m_controller->open_driver_connection("ORBE_Dext_Driver", true); }

    // Opens box 0.
    void open_box() const {
        box_driver().set_present_boxes(1);
        ASSERT_TRUE(open());
    }

    // The handles to files of box 0, whoever holds them.
    static std::uint64_t open_files() { return box_driver().get(0, BOX_OPEN_FILES); }

    std::unique_ptr<CP_Win_ORBE_Controller> m_controller = std::make_unique<CP_Win_ORBE_Controller>();
};

} // namespace Pelgar::ORBE::test
