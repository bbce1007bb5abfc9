// Functions of the published API that the box does not carry out: each is logged by its name and answers
// NOTSUPPORTED without a word to its caller. Each has its test from the list of all functions.
#include "Logged_Call_Fixture.h"

#include <gtest/gtest.h>

#include <ctime>
#include <string>

namespace {

using namespace Neuropixels;
using Pelgar::ORBE::test::call_with_nulls;
using Pelgar::ORBE::test::call_with_samples;
using Pelgar::ORBE::test::Logged_Call_Fixture;

class Unsupported : public Logged_Call_Fixture {
protected:
    template <typename Function>
    void expect_unsupported(const std::string& name, Function* function) {
        const auto outcome = call_with_samples(function);
        EXPECT_EQ(outcome.result, "254");
        EXPECT_EQ(outcome.written.find_first_not_of("-, "), std::string::npos) << outcome.written;
        EXPECT_EQ(logged_lines(), scope_with_line(name, name));
        m_log.clear();
        EXPECT_EQ(call_with_nulls(function), "254");
        EXPECT_EQ(logged_lines(), scope_with_line(name, name));
    }
};

#define NP_FUNCTION(result, name, parameters, arguments)
#define NP_ADDITION(result, name, parameters, arguments)
#define NP_UNSUPPORTED(result, name, parameters, arguments)                                                  \
    TEST_F(Unsupported, name) {                                                                              \
        expect_unsupported(#name, &Neuropixels::name);                                                       \
    }
#define NP_UNSUPPORTED_OWN_TWIN(result, name, parameters, arguments)                                         \
    NP_UNSUPPORTED(result, name, parameters, arguments)
#include "NeuropixAPI_Functions.inc"

TEST_F(Unsupported, PositionInAFileIsAnsweredWithZero) {
    EXPECT_EQ(streamTell(nullptr), 0U);
    EXPECT_EQ(logged_lines(), scope_with_line("streamTell", "streamTell"));
}

TEST_F(Unsupported, DebugLevelIsAnsweredWithZero) {
    dbg_setlevel(3);
    EXPECT_EQ(logged_lines(), scope_with_line("dbg_setlevel", "dbg_setlevel"));
    m_log.clear();
    EXPECT_EQ(dbg_getlevel(), 0);
    EXPECT_EQ(logged_lines(), scope_with_line("dbg_getlevel", "dbg_getlevel"));
}

TEST_F(Unsupported, LogCallbackIsNotCalled) {
    dbg_setlogcallback(0, [](int, std::time_t, const char*, const char*) { ADD_FAILURE() << "called"; });
    EXPECT_EQ(logged_lines(), scope_with_line("dbg_setlogcallback", "dbg_setlogcallback"));
    bistEEPROM(0, 1);
    dbg_setlogcallback(0, nullptr);
}

TEST_F(Unsupported, VersionDateIsAnEmptyText) {
    std::string text = "###";
    dbg_getversion_datetime(text.data(), text.size());
    EXPECT_EQ(text, std::string("\0##", 3));
    EXPECT_EQ(logged_lines(), scope_with_line("dbg_getversion_datetime", "dbg_getversion_datetime"));
    text = "###";
    dbg_getversion_datetime(text.data(), 0);
    dbg_getversion_datetime(nullptr, 3);
    EXPECT_EQ(text, "###");
}

} // namespace
