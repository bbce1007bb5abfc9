// The C twins of the exported functions: each is its function under another name.
#include "Logged_Call_Fixture.h"
#include "NeuropixAPI_C.h"

#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace Neuropixels;
using Pelgar::ORBE::npoe_adapter::current_np_converter;
using Pelgar::ORBE::npoe_adapter::current_rhd_converter;
using Pelgar::ORBE::test::call_with_samples;
using Pelgar::ORBE::test::Logged_Call_Fixture;

class C_Twins : public Logged_Call_Fixture {
protected:
    // No box is opened, should there be one, and the first call of a process, which starts the log file, is
    // over.
    C_Twins() {
        select_simulation("no such recording");
        getDeviceList(nullptr, 0);
        m_log.clear();
    }

    struct Trace {
        std::string outcome;
        std::vector<std::string> logged;
    };

    // What a call on a closed basestation answers, writes, throws and logs.
    template <typename Function>
    Trace trace(Function* function) {
        closeBS(0);
        m_log.clear();
        Trace trace;
        try {
            const auto outcome = call_with_samples(function);
            trace.outcome = "result " + outcome.result + ", written " + outcome.written;
        } catch (const std::out_of_range& exception) {
            trace.outcome = std::string("throws ") + exception.what();
        }
        trace.logged = logged_lines();
        return trace;
    }

    template <typename Function>
    void expect_alike(Function* function, Function* twin) {
        const Trace of_function = trace(function);
        const Trace of_twin = trace(twin);
        EXPECT_EQ(of_twin.outcome, of_function.outcome);
        EXPECT_EQ(of_twin.logged, of_function.logged);
    }
};

// One test a twin; those that do not call their functions are tested with the functions that are only logged.
#define NP_FUNCTION(result, name, parameters, arguments)                                                     \
    TEST_F(C_Twins, name) {                                                                                  \
        expect_alike(&Neuropixels::name, &::np_##name);                                                      \
    }
#define NP_FUNCTION_OWN_TWIN(result, name, parameters, arguments)
#define NP_UNSUPPORTED_OWN_TWIN(result, name, parameters, arguments)
#define NP_ADDITION(result, name, parameters, arguments) NP_FUNCTION(result, name, parameters, arguments)
#define NP_TEXT_ADDITION(result, name, parameters, arguments)
#include "NeuropixAPI_Functions.inc"

TEST_F(C_Twins, OpenReadAndClose) {
    select_simulation(write_recording_without_rows(mebibyte));
    EXPECT_EQ(np_openBS(0), SUCCESS);
    EXPECT_EQ(np_bistBS(0), SUCCESS);
    electrodePacket packet{};
    int read = -1;
    EXPECT_EQ(np_readElectrodeData(0, 1, 0, &packet, &read, 0), SUCCESS);
    EXPECT_EQ(read, 0);
    int available = -1;
    int headroom = -1;
    EXPECT_EQ(np_getElectrodeDataFifoState(0, 1, 0, &available, &headroom), SUCCESS);
    EXPECT_EQ(available, 0);
    EXPECT_EQ(headroom, 500);
    EXPECT_EQ(np_closeBS(0), SUCCESS);
    EXPECT_EQ(np_bistBS(0), FAILED);
}

// The names in "(int slotID, bool* detected)" and in "(slotID, detected)", in their order. Of a pointer to a
// function the name stands inside: "(*progress)(size_t)".
std::vector<std::string> names_in(const std::string& list) {
    static const std::regex entry(R"(\(\*(\w+)\)\([^()]*\)|(\w+)(?=\s*[,)]))");
    std::vector<std::string> names;
    for (std::sregex_iterator at(list.begin() + 1, list.end(), entry), end; at != end; ++at) {
        names.push_back((*at)[1].matched ? (*at)[1].str() : (*at)[2].str());
    }
    return names;
}

// Whatever a call has an effect on: what a twin hands on stands in the table, row by row.
TEST_F(C_Twins, HandEveryArgumentOnInItsPlace) {
    int rows = 0;
    const auto look_at = [&](const char* name, const char* parameters, const char* arguments) {
        EXPECT_EQ(names_in(parameters), names_in(arguments)) << name;
        ++rows;
    };
#define NP_FUNCTION(result, name, parameters, arguments) look_at(#name, #parameters, #arguments);
#define NP_ADDITION(result, name, parameters, arguments) look_at(#name, #parameters, #arguments);
#include "NeuropixAPI_Functions.inc"
    EXPECT_GT(rows, 100);
    EXPECT_EQ(names_in("(int slotID, int (*progress)(size_t byteswritten), const char* name)"),
              (std::vector<std::string>{"slotID", "progress", "name"}));
    EXPECT_EQ(names_in("()"), std::vector<std::string>{});
}

// The same by its effect: calls on an open basestation whose arguments all differ.
TEST_F(C_Twins, DoTheSameOnAnOpenBasestation) {
    select_simulation(write_recording_without_rows(mebibyte));
    ASSERT_EQ(np_openBS(5), SUCCESS);
    wait_for_quiet_log();
    std::ofstream("gain.csv").close();
    int ap = -1;
    int lfp = -1;
    std::string text(32, '?');
    electrodePacket packet{};
    bool detected = false;
    const auto expect_logged = [&](NP_ErrorCode result, NP_ErrorCode expected,
                                   const std::vector<std::string>& lines) {
        EXPECT_EQ(result, expected) << lines.front();
        for (const std::string& line : lines) {
            EXPECT_EQ(m_log.count(line), 1) << line;
        }
        m_log.clear();
    };
    m_log.clear();
    expect_logged(np_openPort(5, 2), SUCCESS,
                  {"slotID : 5, portID : 2", "ORBE_Controller_Library::probe_init_part_1() np_port_id : 1"});
    expect_logged(np_init(5, 2, 3), SUCCESS,
                  {"slotID : 5, portID : 2, dockID : 3",
                   "ORBE_Controller_Library::probe_init_part_2() np_port_id : 1, init_config : 1"});
    expect_logged(np_setGain(5, 2, 3, 100, 4, 6), SUCCESS,
                  {"slotID : 5, portID : 2, dockID : 3", "channel=100, ap_gain=4, lfp_gain=6"});
    expect_logged(np_getGain(5, 2, 3, 100, &ap, nullptr), SUCCESS,
                  {"portID : 2, APgainselect : 4, LFPgainselect : 4"});
    EXPECT_EQ(ap, 4);
    expect_logged(np_getGain(5, 2, 3, 100, nullptr, &lfp), SUCCESS,
                  {"portID : 2, APgainselect : 4, LFPgainselect : 4"});
    EXPECT_EQ(lfp, 4);
    expect_logged(np_setGain(5, 2, 3, 100, 9, 11), FAILED, {"invalid AP gain: 9"});
    expect_logged(np_setGain(5, 2, 3, 100, 1, 11), FAILED, {"invalid LFP gain: 11"});
    expect_logged(np_selectElectrode(5, 2, 3, 100, 1, 7), FAILED,
                  {"channel=100, bank=7", "invalid electrode bank: 7"});
    expect_logged(
        np_selectElectrode(5, 2, 3, 200, 1, 2), FAILED,
        {"invalid electrode bank: 2 for channel 200. Only bank0/1 are valid in channel range 192..383."});
    expect_logged(np_setReference(5, 2, 3, 100, 4, TIP_REF, 300), FAILED,
                  {"channel=100,reference=1,bank=300", "invalid channel internal reference: 300"});
    expect_logged(np_setAPCornerFrequency(5, 2, 3, 400, true), FAILED,
                  {"channel=400, disableHighPass : 1", "invalid channel: 400"});
    expect_logged(np_writeProbeConfiguration(5, 2, 3, true), SUCCESS,
                  {"slotID : 5, portID : 2, dockID : 3, readcheck : 1"});
    expect_logged(np_setADCCalibration(5, 2, "missing.csv"), FAILED,
                  {"slotID : 5, portID : 2, filename : missing.csv"});
    expect_logged(np_setGainCalibration(5, 2, 3, "gain.csv"), FAILED,
                  {"slotID : 5, portID : 2", "Gain Calibration load error"});
    expect_logged(np_readHSPN(5, 2, text.data(), 4), SUCCESS,
                  {"slotID : 5, portID : 2", "Reporting HS part number : NP2"});
    EXPECT_EQ(text.substr(0, 5), std::string("NP2\0?", 5));
    expect_logged(np_detectHeadStage(5, 1, &detected), SUCCESS, {"slotID : 5, portID : 1"});
    EXPECT_TRUE(detected);
    current_np_converter(2)->queue().push({});
    EXPECT_EQ(np_getElectrodeDataFifoState(5, 2, 3, &ap, &lfp), SUCCESS);
    EXPECT_EQ(ap, 1);
    EXPECT_EQ(lfp, 499);
    EXPECT_EQ(np_readElectrodeData(5, 2, 3, &packet, &ap, 1), SUCCESS);
    EXPECT_EQ(ap, 1);
    current_rhd_converter()->queue().push({});
    EXPECT_EQ(np_ADC_readPackets(5, nullptr, nullptr, 8, 1, &ap), SUCCESS);
    EXPECT_EQ(ap, 1);
    expect_logged(np_start_acquisition(5, 2), SUCCESS, {"starting acquisition : slotID : 5, portID : 2"});
}

TEST_F(C_Twins, ThrowWhatTheirFunctionsThrow) {
    int number = 0;
    EXPECT_THROW(np_readElectrodeData(0, 7, 0, nullptr, &number, 1), std::out_of_range);
    EXPECT_THROW(np_getElectrodeDataFifoState(0, 0, 0, &number, &number), std::out_of_range);
}

TEST_F(C_Twins, DebugLevelIsLoggedUnderBothNames) {
    ::np_dbg_setlevel(4);
    EXPECT_EQ(logged_lines(), scope_with_line("np_dbg_setlevel", "4"));
    m_log.clear();
    Neuropixels::np_dbg_setlevel(4);
    EXPECT_EQ(logged_lines(), scope_with_line("np_dbg_setlevel", "4"));
    m_log.clear();
    ::np_np_dbg_setlevel(4);
    EXPECT_EQ(logged_lines(), scope_with_line("np_dbg_setlevel", "4"));
}

TEST_F(C_Twins, WriteTheDesignsTextsIntoABuffer) {
    select_simulation(write_recording_without_rows(mebibyte));
    ASSERT_EQ(np_openBS(0), SUCCESS);
    const auto expect_text = [](NP_ErrorCode (*twin)(char*, size_t), const std::string& whole) {
        ASSERT_GT(whole.size(), 3U);
        std::string buffer(whole.size() + 2, '?');
        EXPECT_EQ(twin(buffer.data(), buffer.size()), SUCCESS);
        EXPECT_EQ(buffer, whole + '\0' + '?');
        std::string short_buffer(5, '?');
        EXPECT_EQ(twin(short_buffer.data(), 4), SUCCESS);
        EXPECT_EQ(short_buffer, whole.substr(0, 3) + '\0' + '?');
        EXPECT_EQ(twin(nullptr, 100), SUCCESS);
    };
    expect_text(np_bs_get_fpga_design_label, bs_get_fpga_design_label());
    expect_text(np_bs_get_fpga_design_build_date, bs_get_fpga_design_build_date());
    np_closeBS(0);
}

TEST_F(C_Twins, AnswerAFailureAndNoTextWithoutABasestation) {
    std::string buffer(4, '?');
    EXPECT_EQ(np_bs_get_fpga_design_label(buffer.data(), buffer.size()), FAILED);
    EXPECT_EQ(buffer, std::string("\0???", 4));
    buffer.assign(4, '?');
    EXPECT_EQ(np_bs_get_fpga_design_build_date(buffer.data(), buffer.size()), FAILED);
    EXPECT_EQ(buffer, std::string("\0???", 4));
}

} // namespace
