// Functions that are logged and do nothing else. The table below says what each logs and answers; the tests
// come from the table that the functions come from.
#include "Logged_Call_Fixture.h"
#include "NeuropixAPI_C.h"

#include <gtest/gtest.h>

namespace {

using namespace Neuropixels;
using Pelgar::ORBE::test::Expected_Call;
using Pelgar::ORBE::test::Logged_Call_Fixture;

class Unused : public Logged_Call_Fixture {};

class Logged_Twins : public Logged_Call_Fixture {};

const Expected_Call expected_calls[] = {
    {"scanBS", "0", "", "0"},
    {"mapBS", "11", "", "0"},
    {"setParameter", "1", "", "0"},
    {"setSWTrigger", "slotID : 11", "", "0"},
    {"setSWTriggerEx", "11", "", "0"},
    {"detectFlex", "11", "-", "0"},
    {"getHSSupportedProbeCount", "11", "-", "0"},
    {"readHSSN", "0", "-", "0"},
    {"HST_GetVersion", "slotID : 11, portID : 22", "-, -", "1"},
    {"setHSLed", "enable : 1, slotID : 11, portID : 22", "", "0"},
    {"bs_updateFirmware", "11", "", "0"},
    {"bsc_updateFirmware", "11", "", "0"},
    {"bistNoise", "22", "", "0"},
    {"bistSignal", "22", "", "0"},
    {"HSTestVDDA1V2", "22", "", "0"},
    {"HSTestVDDD1V2", "22", "", "0"},
    {"HSTestVDDA1V8", "22", "", "0"},
    {"HSTestVDDD1V8", "22", "", "0"},
    {"HSTestOscillator", "22", "", "0"},
    {"HSTestMCLK", "22", "", "0"},
    {"HSTestPCLK", "22", "", "0"},
    {"HSTestPSB", "22", "", "0"},
    {"HSTestI2C", "22", "", "0"},
    {"HSTestNRST", "22", "", "0"},
    {"HSTestREC_NRESET", "22", "", "0"},
    {"setEmissionSite", "22", "", "0"},
    {"getEmissionSite", "22", "-", "0"},
    {"switchmatrix_set", "11", "", "0"},
    {"selectColumnPattern", "22", "", "0"},
    {"selectElectrodeGroup", "22", "", "0"},
    {"selectElectrodeGroupMask", "22", "", "0"},
    {"waveplayer_writeBuffer", "11", "", "0"},
    {"waveplayer_arm", "11", "", "0"},
    {"waveplayer_setSampleFrequency", "11", "", "0"},
    {"readPackets", "22", "-, -, -", "0"},
    {"getPacketFifoStatus", "22", "-, -", "0"},
    {"ADC_setVoltageRange", "11", "", "0"},
    {"DAC_enableOutput", "11", "", "0"},
    {"DAC_setProbeSniffer", "11", "", "0"},
    {"np_dbg_setlevel", "11", "", ""},
};

const Expected_Call expected_twin_calls[] = {
    {"np_dbg_setlevel", "11", "", ""},
    {"np_getFlexVersion", "22", "-, -", "0"},
    {"np_getHSVersion", "22", "-, -", "0"},
    {"np_readFlexPN", "22", "-", "0"},
    {"np_readHSSN", "22", "-", "0"},
    {"np_readProbePN", "22", "-", "0"},
    {"np_setEmissionSite", "22", "", "0"},
    {"np_setHSLed", "22", "", "0"},
    {"np_setOpticalCalibration", "22", "", "0"},
};

#define NP_LOGGED_ONLY(type, name, parameters, result, ...)                                                  \
    TEST_F(Unused, name) {                                                                                   \
        expect_call(#name, &Neuropixels::name, expected_calls);                                              \
    }
#define NP_LOGGED_TWIN(type, name, parameters, ...)                                                          \
    TEST_F(Logged_Twins, name) {                                                                             \
        expect_call(#name, &::name, expected_twin_calls);                                                    \
    }
#include "api/NeuropixAPI_unused.inc"

TEST_F(Unused, AreAllExpected) {
#define NP_LOGGED_ONLY(type, name, parameters, result, ...) #name,
    expect_rows(expected_calls, {
#include "api/NeuropixAPI_unused.inc"
                                });
}

TEST_F(Logged_Twins, AreAllExpected) {
#define NP_LOGGED_TWIN(type, name, parameters, ...) #name,
    expect_rows(expected_twin_calls, {
#include "api/NeuropixAPI_unused.inc"
                                     });
}

TEST_F(Unused, LogsWhatItIsGiven) {
    setParameter(NP_PARAM_ALLOWMANUALPXISYNCCONFIG, 0);
    EXPECT_EQ(m_log.texts(), std::vector<std::string>{"4097"});
    m_log.clear();
    setHSLed(-1, 0, false);
    EXPECT_EQ(m_log.texts(), std::vector<std::string>{"enable : 0, slotID : -1, portID : 0"});
}

TEST_F(Unused, DebugLevelLeavesTheLogsVerbosityAlone) {
    const auto before = loguru::current_verbosity_cutoff();
    Neuropixels::np_dbg_setlevel(0);
    dbg_setlevel(0);
    EXPECT_EQ(loguru::current_verbosity_cutoff(), before);
}

} // namespace
