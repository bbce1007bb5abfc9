// What a host asks first, before a list of devices too (each of these tests is the first call of a process
// when it runs alone), and what it asks of a port that it has not opened.
#include "Held_Box.h"

#include <NeuropixAPI_C.h>

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <optional>
#include <string>

namespace {

using namespace Neuropixels;
using namespace Pelgar::ORBE::test;

std::string last_error() {
    char text[256] = "";
    getLastErrorMessage(text, sizeof text);
    return text;
}

// ---- Before a list of devices.

TEST(Host_First_Question, MayBeForTheUSBDriver) {
    select_host_mode("usb");
    driver_version required{9, 9, 9};
    driver_version current{8, 8, 8};
    bool present = false;
    bool right = false;
    EXPECT_EQ(np_checkFtdiDriver(&required, &current, &present, &right), SUCCESS);
    EXPECT_TRUE(present && right);
    EXPECT_EQ(required.major + required.minor + required.build, 0U);
    EXPECT_EQ(current.major + current.minor + current.build, 0U);
}

TEST(Host_First_Question, MayGiveTheUSBDeviceASlot) {
    select_host_mode("usb");
    EXPECT_EQ(mapBS(1, 23), SUCCESS);
    basestationID info{};
    EXPECT_EQ(getDeviceInfo(23, &info), SUCCESS);
    EXPECT_EQ(info.platformid, NPPlatform_USB);
    EXPECT_EQ(mapBS(1, 20), SUCCESS);
}

TEST(Host_First_Question, MayBeForTheFirmware) {
    select_host_mode("pxi 3.0.226 4.0.233");
    firmware_Info info{};
    EXPECT_EQ(bs_getFirmwareInfo(2, &info), SUCCESS);
    EXPECT_EQ((std::array{info.major, info.minor, info.build}), (std::array{3, 0, 226}));
}

TEST(Host_First_Question, MayBeForTheConnectCardsFirmware) {
    select_host_mode("pxi 3.0.226 4.0.233");
    firmware_Info info{};
    EXPECT_EQ(bsc_getFirmwareInfo(2, &info), SUCCESS);
    EXPECT_EQ((std::array{info.major, info.minor, info.build}), (std::array{4, 0, 233}));
}

TEST(Host_First_Question, MayBeForASlotWhereNothingIs) {
    select_host_mode("pxi");
    EXPECT_EQ(getDeviceInfo(17, nullptr), NO_SLOT);
    EXPECT_EQ(last_error(), "getDeviceInfo : no basestation in the slot");
}

TEST(Host_First_Question, FindsNoDeviceWhenTheFileHoldsABadWord) {
    select_host_mode("pxie");
    for (int slot = 0; slot < 30; ++slot) {
        EXPECT_EQ(getDeviceInfo(slot, nullptr), NO_SLOT) << slot;
    }
    basestationID id{NPPlatform_PXI, 2};
    int slot = -1;
    EXPECT_FALSE(tryGetSlotID(&id, &slot));
    id = {NPPlatform_USB, 1};
    EXPECT_FALSE(tryGetSlotID(&id, &slot));
    EXPECT_EQ(slot, -1);
}

// ---- Of a port.

class Host_Ports : public Held_Box {
protected:
    static constexpr int port = 2;
    static constexpr int empty_port = 3;

    void open_with_an_empty_port() {
        m_box->lock_at_look(empty_port - 1, std::nullopt);
        open_pxi();
    }
};

TEST_F(Host_Ports, HaveOneProbeEach) {
    open_with_an_empty_port();
    int count = -1;
    EXPECT_EQ(getHSSupportedProbeCount(slot, port, &count), SUCCESS);
    EXPECT_EQ(count, 1);
    EXPECT_EQ(getHSSupportedProbeCount(slot, empty_port, &count), NO_LINK);
}

TEST_F(Host_Ports, HaveAFlexWhereTheyHaveAProbe) {
    open_with_an_empty_port();
    bool detected = false;
    EXPECT_EQ(detectFlex(slot, port, 1, &detected), SUCCESS);
    EXPECT_TRUE(detected);
    EXPECT_EQ(detectFlex(slot, empty_port, 1, &detected), SUCCESS);
    EXPECT_FALSE(detected);
}

TEST_F(Host_Ports, HaveTheirLinkCheckedByTheFirstCallThatNeedsIt) {
    open_pxi();
    m_box->headstage(port - 1).forget_frames();
    uint64_t number = 0;
    EXPECT_EQ(readProbeSN(slot, port, 1, &number), SUCCESS);
    const auto reads_of_the_id = [this] {
        std::size_t reads = 0;
        for (const Link_Frame& frame : m_box->headstage(port - 1).frames()) {
            reads +=
                frame.size() == 4 && (frame[1] & 0xFEU) == Virtual_Headstage::deserializer && frame[2] == 0x1E
                    ? 1U
                    : 0U;
        }
        return reads;
    };
    EXPECT_EQ(reads_of_the_id(), 1U);
    EXPECT_EQ(readProbeSN(slot, port, 1, &number), SUCCESS);
    EXPECT_EQ(reads_of_the_id(), 1U) << "once an opening";
}

TEST_F(Host_Ports, WithSomethingElseAtTheirEndHaveNoLink) {
    open_pxi();
    m_box->headstage(port - 1).set(Virtual_Headstage::deserializer, 0x1E, 0x55);
    uint64_t number = 0;
    HardwareID id{};
    EXPECT_EQ(readProbeSN(slot, port, 1, &number), NO_LINK);
    EXPECT_EQ(number, 0U);
    EXPECT_EQ(getProbeHardwareID(slot, port, 1, &id), NO_LINK);
    EXPECT_EQ(init(slot, port, 1), NO_LINK);
    EXPECT_EQ(readProbeSN(slot, port + 1, 1, &number), SUCCESS) << "the other ports have theirs";
}

} // namespace
