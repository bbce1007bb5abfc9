#include "adapter/Sweep_Log_Throttle.h"

#include <loguru.hpp>

namespace Pelgar::ORBE::npoe_adapter {

namespace {

constexpr int never_logged = loguru::Verbosity_MAX + 1;

} // namespace

int Sweep_Log_Throttle::verbosity_for(int channel) {
    const bool follows = static_cast<long long>(channel) == static_cast<long long>(m_last_channel.load()) + 1;
    m_last_channel = channel;
    return follows ? never_logged : static_cast<int>(loguru::Verbosity_INFO);
}

} // namespace Pelgar::ORBE::npoe_adapter
