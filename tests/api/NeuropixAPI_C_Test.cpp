// The C twins of the exported functions: each is its function under another name.
#include "Logged_Call_Fixture.h"
#include "NeuropixAPI_C.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace Neuropixels;
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
