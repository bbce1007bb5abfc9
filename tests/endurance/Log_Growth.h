// Endurance test. What the library writes while it streams, apart from what each opening writes. One thread.
#pragma once

#include "Process_State.h"

#include <cstdint>
#include <string>

namespace Pelgar::ORBE::test {

class Log_Growth {
public:
    // An opening has begun to stream, and is about to end after so many ticks.
    void begin(const Process_State& state) { m_begin = state; }

    void end(const Process_State& state, std::uint64_t ticks);

    // Written while streaming, in all openings.
    std::uint64_t logged() const { return m_logged; }

    std::uint64_t printed() const { return m_printed; }

    // What is wrong; empty when nothing is. Into the log nothing may go while all is well. What is printed by
    // the way (wraps of the frame counter, every 256th transfer, the length of queues) may be 2 MiB an hour
    // and port: it is 1.4 MB in the host mode, and a fifth of that in the box's own.
    std::string fault(unsigned ports) const;

private:
    Process_State m_begin;
    std::uint64_t m_logged = 0;
    std::uint64_t m_printed = 0;
    std::uint64_t m_ticks = 0;
    std::uint64_t m_openings = 0;
};

} // namespace Pelgar::ORBE::test
