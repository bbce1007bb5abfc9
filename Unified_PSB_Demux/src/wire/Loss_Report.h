// Layer: demultiplexer. Counts what a full inner queue could not take, and tells of it in the log at most
// once a second. The queue's producer counts; blocks for the log's own lock, and only while something is
// lost.
#pragma once

#include "common/Once_A_Second.h"
#include "common/Relaxed.h"

#include <cstdint>
#include <string>
#include <utility>

namespace Pelgar::ORBE::demux {

class Loss_Report {
public:
    // "<queue> is full : 12 <units> lost so far"
    Loss_Report(std::string queue, std::string units)
        : m_queue(std::move(queue)), m_units(std::move(units)) {}

    // So much more has been lost.
    void count(std::uint64_t amount, Once_A_Second::Clock::time_point now = Once_A_Second::Clock::now());

    // Tells the count that has not been told yet, if any. While nothing is counted.
    void tell_rest();

    // Lost since construction. Any thread.
    std::uint64_t total() const { return m_total; }

private:
    void tell();

    std::string m_queue;
    std::string m_units;
    Relaxed<std::uint64_t> m_total{0};
    std::uint64_t m_told = 0;
    Once_A_Second m_telling;
};

} // namespace Pelgar::ORBE::demux
