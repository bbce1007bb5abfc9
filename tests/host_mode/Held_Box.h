// Test support, host mode. The virtual box without real waits, which makes no tick but those that a test lets
// it make.
#pragma once

#include "Box_Row.h"
#include "Wait_Until.h"

#include "Waiter_Guard.h"

#include <cstdint>

namespace Pelgar::ORBE::test {

class Held_Box : public Box_Row {
protected:
    using Box_Row::Box_Row;

    // While nothing waits yet.
    ~Held_Box() override {
        m_clock.reset();
        Neuropixels::closeBS(slot);
        Neuropixels::closeBS(usb_slot);
    }

    // Before a trigger.
    void hold() {
        m_clock.reset();
        m_limit = m_box->stream().ticks();
        m_box->stream().set_limit(m_limit);
    }

    // Blocks until a port of the box has sent so many more super frames.
    void let_make(std::uint64_t ticks) {
        m_limit += ticks;
        m_box->stream().set_limit(m_limit);
        EXPECT_TRUE(wait_until(
            [this] { return m_box->stream().ticks() == m_limit && m_box->stream().is_held_back(); },
            patience));
    }

    // The registers' bits that let the probe ports send.
    std::uint32_t sending_ports() const { return m_box->value(Virtual_Box::configuration) & 0xFU; }

private:
    Waiter_Guard m_waiter;
    std::uint64_t m_limit = 0;
};

} // namespace Pelgar::ORBE::test
