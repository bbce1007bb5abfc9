// A process that is forked off a host which streams: it has the host's states and no box.
#include "Held_Box.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace Neuropixels;
using namespace Pelgar::ORBE::test;

class Host_Forked_Process : public Held_Box {};

TEST_F(Host_Forked_Process, IsTriggeredInVainAndLeavesTheParentItsRun) {
    open_pxi();
    EXPECT_EQ(setSWTrigger(slot), SUCCESS);
    EXPECT_EQ(read_packets(1, 10).size(), 10U);
    const pid_t child = fork();
    ASSERT_NE(child, -1);
    if (child == 0) {
        alarm(60); // ends a process that hangs
        _exit(setSWTrigger(slot) == NOT_OPEN && arm(slot) == NOT_OPEN ? 0 : 1);
    }
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    EXPECT_EQ(read_packets(1, 100).size(), 100U);
}

} // namespace
