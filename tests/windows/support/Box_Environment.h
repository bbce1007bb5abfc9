// Test support, Windows. The driver of the whole test program: it is installed before the first test and
// removed after the last. The tests' thread.
#pragma once

#include "Box_Driver.h"

#include <gtest/gtest.h>

namespace Pelgar::ORBE::test {

// Only while tests run.
Box_Driver& box_driver();

// Each test starts with both boxes as after power-up, and with none of them present.
class Box_Fixture : public testing::Test {
protected:
    Box_Fixture();
};

} // namespace Pelgar::ORBE::test
