#include "probe/CP_L2_CH_Results_Null_Writer.h"

#include "Captured_Output.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using namespace Pelgar::ORBE::demux;
using Pelgar::ORBE::test::captured_output;

TEST(CP_L2_CH_Results_Null_Writer, DoesNothing) {
    CP_L2_CH_Results_Null_Writer writer;
    I_L2_Demux_CH_Results& listener = writer;
    std::uint16_t values[channel_count];
    std::fill(std::begin(values), std::end(values), std::uint16_t{0x123});
    const auto output = captured_output([&] {
        listener.publish_ap_ch_data(values);
        listener.publish_lp_ch_data(values);
    });
    EXPECT_EQ(output.out + output.err, "");
    EXPECT_EQ(std::count(std::begin(values), std::end(values), 0x123), 384);
}

} // namespace
