// Layer: façade, host mode. Which of the box's inputs is the sync signal: the connections of the switch
// matrix that a host asks for, and the sync clock. The host's threads set it, the worker threads of the
// streams look; these take no lock.
#pragma once

#include "NeuropixAPI.h"
#include "common/Relaxed.h"

#include <cstdint>
#include <mutex>
#include <set>
#include <utility>

namespace Pelgar::ORBE::npoe_adapter {

// What the box knows of its inputs at one sample: the TTL inputs 1 to 8 in bits 8 to 15, as the RHD stream
// carries them, and the comparators 0 to 11 in bits 16 to 27.
using Input_Levels = std::uint32_t;

inline constexpr unsigned first_ttl_bit = 8;
inline constexpr unsigned first_comparator_bit = 16;
inline constexpr Input_Levels ttl_bits = 0xFF00;

class Sync_Source {
public:
    Sync_Source() { reset(); }

    // As before any host: the first TTL input, no clock.
    void reset();

    void connect(Neuropixels::switchmatrixoutput_t output, Neuropixels::switchmatrixinput_t input,
                 bool connected);
    bool is_connected(Neuropixels::switchmatrixoutput_t output, Neuropixels::switchmatrixinput_t input) const;
    void clear(Neuropixels::switchmatrixoutput_t output);

    // The clock's period; a period of no length is left alone. A clock that is asked for by its name shows
    // until an input is connected to the status bit instead.
    void set_clock_period(double milliseconds);
    void ask_for_clock(bool on);

    // Whether an input decides, and not the clock alone.
    bool uses_inputs() const { return m_inputs.load() != 0; }

    bool input_level(Input_Levels levels) const { return (levels & m_inputs.load()) != 0; }

    // The clock is high in the first half of its period.
    bool clock_level(std::uint64_t sample) const {
        const std::uint64_t period = m_clock_period;
        return period != 0 && sample % period < period / 2;
    }

private:
    void update();

    mutable std::mutex m_mutex; // guards what the host has asked for
    std::set<std::pair<Neuropixels::switchmatrixoutput_t, Neuropixels::switchmatrixinput_t>> m_connections;
    bool m_clock_is_asked_for = false;
    std::uint64_t m_asked_period = 0;
    // What follows from it.
    Relaxed<Input_Levels> m_inputs{0};
    Relaxed<std::uint64_t> m_clock_period{0}; // samples; 0: no clock
};

} // namespace Pelgar::ORBE::npoe_adapter
