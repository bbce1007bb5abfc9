// Questions that are answered with fixed values. The table below says what each answers; the tests come from
// the table that the functions come from.
#include "Logged_Call_Fixture.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>

namespace {

using namespace Neuropixels;
using Pelgar::ORBE::test::Expected_Call;
using Pelgar::ORBE::test::Logged_Call_Fixture;

class Fixed_Answers : public Logged_Call_Fixture {};

const Expected_Call expected_calls[] = {
    {"getAPIVersion", "1", "1, 0", ""},
    {"getBSCVersion", "slotID : 11", "1, 0", "0"},
    {"getHSVersion", "22", "1, 0", "0"},
    {"getFlexVersion", "22", "1, 0", "0"},
    {"readBSCPN", "slotID : 11", "ORBE NA", "0"},
    {"readBSCSN", "slotID : 11", "12345", "0"},
    {"readFlexPN", "22", "Pelgar ORBE Flex", "0"},
    {"bs_getFirmwareInfo", "11", "2.0.1 ORBE 1.0", "0"},
    {"bsc_getFirmwareInfo", "slotID : 11", "2.0.1 ORBE Firmware 1.0", "0"},
};

#define NP_FIXED_ANSWER(type, name, parameters, written, ...)                                                \
    TEST_F(Fixed_Answers, name) {                                                                            \
        expect_call(#name, &Neuropixels::name, expected_calls);                                              \
    }
#include "api/NeuropixAPI_dummy_info.inc"

TEST_F(Fixed_Answers, AreAllExpected) {
#define NP_FIXED_ANSWER(type, name, parameters, written, ...) #name,
    expect_rows(expected_calls, {
#include "api/NeuropixAPI_dummy_info.inc"
                                });
}

TEST_F(Fixed_Answers, PartNumbersAreCutToTheHostsBuffer) {
    std::array<char, 8> pn{};
    pn.fill('#');
    EXPECT_EQ(readBSCPN(0, pn.data(), 5), SUCCESS);
    EXPECT_EQ(std::string(pn.data(), pn.size()), std::string("ORBE\0###", 8));
    pn.fill('#');
    EXPECT_EQ(readFlexPN(0, 1, 0, pn.data(), 8), SUCCESS);
    EXPECT_EQ(std::string(pn.data(), pn.size()), std::string("Pelgar \0", 8));
    pn.fill('#');
    EXPECT_EQ(readBSCPN(0, pn.data(), 0), SUCCESS);
    EXPECT_EQ(readFlexPN(0, 1, 0, pn.data(), 0), SUCCESS);
    EXPECT_EQ(std::string(pn.data(), pn.size()), "########");
}

} // namespace
