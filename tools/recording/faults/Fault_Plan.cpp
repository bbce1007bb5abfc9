#include "faults/Fault_Plan.h"

#include "numbers/Hash.h"

namespace Pelgar::ORBE::recording {

Fault_Plan::Fault_Plan(const std::vector<Fault>& faults, std::uint64_t seed) : m_seed(mix(seed)) {
    for (const Fault& fault : faults) {
        m_faults.push_back({fault});
    }
}

bool Fault_Plan::strikes(Fault_Kind kind, unsigned stream) {
    bool struck = false;
    for (Planned& planned : m_faults) {
        if (planned.fault.kind == kind && planned.fault.stream.value_or(stream) == stream) {
            // Every fault is asked, since each counts for itself.
            struck = strikes(planned) || struck;
        }
    }
    return struck;
}

bool Fault_Plan::strikes(Planned& planned) {
    const std::uint64_t number = planned.seen++;
    if (planned.fault.rate > 0.0) {
        return unit_interval(random()) < planned.fault.rate;
    }
    return number >= planned.fault.position && number - planned.fault.position < planned.fault.count;
}

std::uint64_t Fault_Plan::random() {
    return mix(m_seed, m_draws++);
}

} // namespace Pelgar::ORBE::recording
