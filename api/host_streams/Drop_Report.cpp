#include "host_streams/Drop_Report.h"

#include <loguru.hpp>

namespace Pelgar::ORBE::npoe_adapter {

namespace {

constexpr auto shortest_silence = std::chrono::seconds(1);

} // namespace

void Drop_Report::count(Clock::time_point now) {
    ++m_dropped;
    if (m_has_told && now - m_last_told < shortest_silence) {
        return;
    }
    m_has_told = true;
    m_last_told = now;
    LOG_F(WARNING, "%s : the host does not read fast enough, %llu packets dropped so far", m_name.c_str(),
          static_cast<unsigned long long>(m_dropped));
}

} // namespace Pelgar::ORBE::npoe_adapter
