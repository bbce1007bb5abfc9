// A process that is forked off a host which streams: it has the host's states and no box.
#include "Held_Box.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace Neuropixels;
using namespace Pelgar::ORBE::test;

class Host_Forked_Process : public Held_Box {};

// Whether the calls, made in a process that is forked off here, answer as they should.
bool holds_in_child(bool (*calls)()) {
    const pid_t child = fork();
    if (child == 0) {
        alarm(60); // ends a process that hangs
        _exit(calls() ? 0 : 1);
    }
    int status = -1;
    return child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

TEST_F(Host_Forked_Process, IsTriggeredInVainAndLeavesTheParentItsRun) {
    open_pxi();
    EXPECT_EQ(setSWTrigger(slot), SUCCESS);
    EXPECT_EQ(read_packets(1, 10).size(), 10U);
    EXPECT_TRUE(holds_in_child([] { return setSWTrigger(slot) == NOT_OPEN && arm(slot) == NOT_OPEN; }));
    EXPECT_EQ(read_packets(1, 100).size(), 100U);
}

TEST_F(Host_Forked_Process, HasNoADCInputsToSet) {
    open_usb();
    EXPECT_EQ(ADC_enableProbe(usb_slot, true), SUCCESS);
    EXPECT_TRUE(holds_in_child([] { return ADC_enableProbe(usb_slot, true) == NOT_OPEN; }));
}

} // namespace
