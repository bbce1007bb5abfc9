#include "host_streams/Drop_Report.h"

#include <loguru.hpp>

namespace Pelgar::ORBE::npoe_adapter {

void Drop_Report::count(Clock::time_point now) {
    ++m_dropped;
    if (m_telling.is_due(now)) {
        LOG_F(WARNING, "%s : the host does not read fast enough, %llu packets dropped so far", m_name.c_str(),
              static_cast<unsigned long long>(m_dropped));
    }
}

} // namespace Pelgar::ORBE::npoe_adapter
