// Test support, virtual box. One probe port: whether its link is locked, and the headstage on it. Its lock
// state is guarded by the register space that owns it; the headstage locks itself.
#pragma once

#include "Virtual_Headstage.h"

#include <cstddef>
#include <optional>

namespace Pelgar::ORBE::test {

class Probe_Port {
public:
    // Power and, for the fourth port, its assignment to probes. What has no power forgets. Answers whether
    // the port came on.
    bool set_on(bool on);

    // One more look at the lock bit.
    bool read_lock();

    bool is_locked() const;

    // The link shows locked from the n-th look after power-up on (1: at once), or never.
    void lock_at_look(std::optional<std::size_t> look) { m_locks_at = look; }

    Virtual_Headstage& headstage() { return m_headstage; }

private:
    bool m_on = false;
    std::optional<std::size_t> m_locks_at = 1;
    std::size_t m_looks = 0;
    Virtual_Headstage m_headstage;
};

} // namespace Pelgar::ORBE::test
