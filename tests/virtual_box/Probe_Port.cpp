#include "Probe_Port.h"

namespace Pelgar::ORBE::test {

bool Probe_Port::set_on(bool on) {
    const bool comes_on = on && !m_on;
    if (m_on && !on) {
        m_headstage.lose_power();
    }
    if (comes_on) {
        m_looks = 0;
    }
    m_on = on;
    return comes_on;
}

bool Probe_Port::read_lock() {
    ++m_looks;
    return m_on && m_locks_at && m_looks >= *m_locks_at;
}

bool Probe_Port::is_locked() const {
    // A link that needs no second look is up before the first.
    return m_on && m_locks_at && m_looks + 1 >= *m_locks_at;
}

} // namespace Pelgar::ORBE::test
