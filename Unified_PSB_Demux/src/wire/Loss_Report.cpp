#include "wire/Loss_Report.h"

#include <loguru.hpp>

namespace Pelgar::ORBE::demux {

void Loss_Report::count(std::uint64_t amount, Once_A_Second::Clock::time_point now) {
    m_total.fetch_add(amount);
    if (m_telling.is_due(now)) {
        tell();
    }
}

void Loss_Report::tell_rest() {
    if (m_told != m_total) {
        tell();
    }
}

void Loss_Report::tell() {
    m_told = m_total;
    LOG_F(WARNING, "%s is full : %llu %s lost so far", m_queue.c_str(),
          static_cast<unsigned long long>(m_told), m_units.c_str());
}

} // namespace Pelgar::ORBE::demux
