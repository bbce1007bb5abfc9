// Entry points that only log, and those that answer fixed values.
#include "API_Fixture.h"

#include <gtest/gtest.h>

namespace {

using namespace Neuropixels;
using Pelgar::ORBE::test::API_Fixture;

class Unused : public API_Fixture {
protected:
    void expect_logged(const std::string& name, const std::string& text) {
        EXPECT_TRUE(m_log.has_scope(1, name));
        EXPECT_EQ(m_log.count(1, text), 1) << name;
        m_log.clear();
    }
};

TEST_F(Unused, EachLogsItsNameAndOneArgument) {
    EXPECT_EQ(scanBS(), SUCCESS);
    expect_logged("scanBS", "0");
    EXPECT_EQ(mapBS(17, 2), SUCCESS);
    expect_logged("mapBS", "17");
    EXPECT_EQ(setParameter(NP_PARAM_SYNCMASTER, 9), SUCCESS);
    expect_logged("setParameter", "3");
    EXPECT_EQ(setSWTrigger(5), SUCCESS);
    expect_logged("setSWTrigger", "slotID : 5");
    EXPECT_EQ(setSWTriggerEx(6, swtrigger2), SUCCESS);
    expect_logged("setSWTriggerEx", "6");
    np_dbg_setlevel(8);
    expect_logged("np_dbg_setlevel", "8");
}

TEST_F(Unused, PacketReadersWriteNothing) {
    PacketInfo info{1, 2, 3};
    std::int16_t data = 4;
    int count = 5;
    EXPECT_EQ(readPackets(0, 3, 0, SourceLFP, &info, &data, 384, 1, &count), SUCCESS);
    expect_logged("readPackets", "3");
    EXPECT_EQ(info.Timestamp, 1U);
    EXPECT_EQ(data, 4);
    EXPECT_EQ(count, 5);
    int headroom = 6;
    EXPECT_EQ(getPacketFifoStatus(0, 2, 0, SourceAP, &count, &headroom), SUCCESS);
    expect_logged("getPacketFifoStatus", "2");
    EXPECT_EQ(count, 5);
    EXPECT_EQ(headroom, 6);
}

TEST_F(Unused, ApiVersionIsOneZero) {
    int major = -1;
    int minor = -1;
    getAPIVersion(&major, &minor);
    expect_logged("getAPIVersion", "1");
    EXPECT_EQ(major, 1);
    EXPECT_EQ(minor, 0);
    getAPIVersion(nullptr, nullptr);
}

} // namespace
