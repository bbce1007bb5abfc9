// Layer: façade, host mode. Counts the packets that a full queue could not take and tells of them at most
// once a second. The worker thread of the stream; blocks for the log's own lock.
#pragma once

#include "common/Once_A_Second.h"

#include <cstdint>
#include <string>
#include <utility>

namespace Pelgar::ORBE::npoe_adapter {

class Drop_Report {
public:
    using Clock = Once_A_Second::Clock;

    // `name` is that of the stream.
    explicit Drop_Report(std::string name) : m_name(std::move(name)) {}

    // One packet has been dropped.
    void count(Clock::time_point now = Clock::now());

private:
    std::string m_name;
    std::uint64_t m_dropped = 0;
    Once_A_Second m_telling;
};

} // namespace Pelgar::ORBE::npoe_adapter
