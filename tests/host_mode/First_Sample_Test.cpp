// The first sample of a run is there however late the triggering thread goes on after the box began to send.
#include "Box_Row.h"
#include "Late_Creator.h"
#include "Port_Check.h"

namespace Pelgar::ORBE::test {

namespace {

using namespace Neuropixels;

class First_Sample : public Box_Row {};

} // namespace

TEST_F(First_Sample, ComesFromEveryPort) {
    open_pxi();
    for (int run = 0; run < 2; ++run) {
        const Late_Creator late;
        EXPECT_EQ(setSWTrigger(slot), SUCCESS);
        for (int port = 1; port <= 4; ++port) {
            const auto packets = read_packets(port, 1);
            ASSERT_EQ(packets.size(), 1U);
            EXPECT_LT(sample_of(packets.front().timestamp[0]), 12U) << "port " << port << ", run " << run;
        }
        EXPECT_EQ(arm(slot), SUCCESS);
    }
}

TEST_F(First_Sample, ComesFromTheADCInputs) {
    open_usb();
    for (int run = 0; run < 2; ++run) {
        const Late_Creator late;
        EXPECT_EQ(setSWTrigger(usb_slot), SUCCESS);
        const auto rows = read_adc(1, 24);
        ASSERT_EQ(rows.size(), 1U);
        EXPECT_EQ(rows.front().info.Timestamp, 0U) << "run " << run;
        EXPECT_EQ(arm(usb_slot), SUCCESS);
    }
}

} // namespace Pelgar::ORBE::test
