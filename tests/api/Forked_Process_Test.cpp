// A process that is forked off a host: what its calls answer, and that none of them waits for threads that it
// does not have.
#include "API_Fixture.h"
#include "adapter/Adapter_State.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace {

using namespace Neuropixels;
using namespace Pelgar::ORBE::npoe_adapter;
using Pelgar::ORBE::test::API_Fixture;

class Forked_Process : public API_Fixture {
protected:
    // Carries out `calls` in a forked process, which has to come to an end by itself.
    static void in_forked_process(const std::function<void()>& calls) {
        constexpr unsigned patience_s = 60;
        const pid_t child = fork();
        ASSERT_NE(child, -1);
        if (child == 0) {
            alarm(patience_s); // ends a process that hangs
            calls();
            _exit(testing::Test::HasFailure() ? EXIT_FAILURE : EXIT_SUCCESS);
        }
        int status = -1;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status)) << "ended by signal " << WTERMSIG(status);
        EXPECT_EQ(WEXITSTATUS(status), EXIT_SUCCESS);
    }

    void expect_error(const char* name, NP_ErrorCode result) {
        EXPECT_EQ(result, FAILED) << name;
        EXPECT_EQ(m_log.count(-2, std::string(name) +
                                      " : the basestation is open in the process that this one "
                                      "was forked from"),
                  1)
            << name;
    }
};

TEST_F(Forked_Process, CallsAnswerAnErrorWhileTheParentHasTheBasestationOpen) {
    open_simulation();
    EXPECT_EQ(openPort(0, 1), SUCCESS);
    EXPECT_EQ(start_acquisition(0, 1), SUCCESS);
    wait_for_quiet_log();
    std::thread reader([] {
        std::array<electrodePacket, 1> packet{};
        int count = 0;
        readElectrodeData(0, 1, 0, packet.data(), &count, 1);
    });
    {
        // As if another thread were in the middle of a self test.
        const std::lock_guard link(*g_i2c_mutex);
        const std::lock_guard stream(*g_stream_mutex);
        const std::lock_guard objects(*g_objects_mutex);
        in_forked_process([this] {
            m_log.clear();
            int number = -1;
            bool flag = true;
            std::uint64_t serial = 0;
            std::array<char, 16> text{};
            std::array<electrodePacket, 1> packet{};
            std::array<PacketInfo, 1> info{};
            std::array<int16_t, 32> samples{};
            expect_error("openPort", openPort(0, 1));
            expect_error("init", init(0, 1, 0));
            expect_error("setGain", setGain(0, 1, 0, 0, 0, 0));
            expect_error("writeProbeConfiguration", writeProbeConfiguration(0, 1, 0, true));
            expect_error("readHSPN", readHSPN(0, 1, text.data(), text.size()));
            expect_error("readProbeSN", readProbeSN(0, 1, 0, &serial));
            expect_error("bistPSB", bistPSB(0, 1, 0));
            expect_error("detectHeadStage", detectHeadStage(0, 1, &flag));
            EXPECT_FALSE(flag);
            EXPECT_EQ(bistBS(0), FAILED);
            EXPECT_EQ(readElectrodeData(0, 1, 0, packet.data(), &number, 1), SUCCESS);
            EXPECT_EQ(number, 0);
            EXPECT_EQ(ADC_readPackets(0, info.data(), samples.data(), 32, 1, &number), SUCCESS);
            EXPECT_EQ(number, 0);
            EXPECT_EQ(stop_acquisition(0, 1), SUCCESS);
            EXPECT_EQ(start_acquisition(0, 1), SUCCESS);
            EXPECT_FALSE(g_acquisition_running);
            EXPECT_EQ(closeBS(0), SUCCESS);
            EXPECT_EQ(openBS(0), VERSION_MISMATCH);
            EXPECT_EQ(m_log.count(-2, "openBS : the basestation is open in the process that this one was "
                                      "forked from"),
                      1);
            in_forked_process([] { EXPECT_EQ(openBS(0), VERSION_MISMATCH); });
        });
    }
    EXPECT_EQ(bistBS(0), SUCCESS) << "the parent goes on";
    EXPECT_EQ(closeBS(0), SUCCESS);
    reader.join();
    EXPECT_EQ(m_log.count("End of main pump thread (0,1)"), 1);
}

TEST_F(Forked_Process, OpensABasestationOfItsOwnWhenTheParentHasNone) {
    open_simulation();
    EXPECT_EQ(closeBS(0), SUCCESS);
    in_forked_process([] {
        EXPECT_EQ(openBS(0), SUCCESS);
        EXPECT_EQ(openPort(0, 1), SUCCESS);
        EXPECT_EQ(closeBS(0), SUCCESS);
    });
}

} // namespace
