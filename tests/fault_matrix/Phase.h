// Test support, fault matrix. The parts of a host's visit, in order. Any thread.
#pragma once

#include <array>
#include <cstdint>

namespace Pelgar::ORBE::test {

enum class Phase : std::uint8_t { open, bring_up, configure, start, stream, stop, close };

inline constexpr std::array all_phases{Phase::open,   Phase::bring_up, Phase::configure, Phase::start,
                                       Phase::stream, Phase::stop,     Phase::close};

// As the table's head has it.
constexpr const char* name_of(Phase phase) {
    switch (phase) {
    case Phase::open:
        return "open";
    case Phase::bring_up:
        return "bring-up";
    case Phase::configure:
        return "configure";
    case Phase::start:
        return "start";
    case Phase::stream:
        return "stream";
    case Phase::stop:
        return "stop";
    case Phase::close:
        break;
    }
    return "close";
}

} // namespace Pelgar::ORBE::test
