#include "rhd/RHD_Frame_Null_listener.h"

#include "Captured_Output.h"
#include "Recording_Listeners.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

using namespace Pelgar::ORBE::demux;
using namespace Pelgar::ORBE::test;

TEST(RHD_Frame_Null_listener, DoesNothing) {
    RHD_Frame_Null_listener null_listener;
    I_RHD_Frame_Listener& listener = null_listener;
    RHD_Frame frame;
    frame.timestamp = 77;
    frame.amplifier_data[3] = std::make_unique<std::array<std::uint16_t, rhd_words_per_stream>>();
    const auto before = copy_of(frame);
    const auto output = captured_output([&] { listener.publish_rhd_frame(frame); });
    EXPECT_EQ(output.out + output.err, "");
    EXPECT_EQ(copy_of(frame), before);
}

} // namespace
