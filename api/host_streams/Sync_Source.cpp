#include "host_streams/Sync_Source.h"

#include "host_streams/Sample_Stamp.h"

#include <algorithm>
#include <cmath>

namespace Pelgar::ORBE::npoe_adapter {

namespace {

using namespace Neuropixels;

constexpr std::uint64_t default_clock_period = samples_per_second;

constexpr Input_Levels ttl_input(unsigned number) {
    return Input_Levels{1} << (first_ttl_bit + number);
}

constexpr Input_Levels comparator(unsigned number) {
    return Input_Levels{1} << (first_comparator_bit + number);
}

// The box has eight TTL inputs, one comparator an ADC input, and no connectors of a PXI chassis: the chassis
// lines are the inputs behind the first one.
Input_Levels levels_of(switchmatrixinput_t input) {
    if (input >= SM_Input_PXI0 && input <= SM_Input_PXI6) {
        return ttl_input(1 + static_cast<unsigned>(input - SM_Input_PXI0));
    }
    if (input >= SM_Input_ADC0 && input <= SM_Input_ADC9) {
        return comparator(static_cast<unsigned>(input - SM_Input_ADC0));
    }
    switch (input) {
    case SM_Input_SMA:
    case SM_Input_PXISYNC:
        return ttl_input(0);
    case SM_Input_SMA1:
        return ttl_input(1);
    case SM_Input_ADC10:
        return comparator(10);
    case SM_Input_ADC11:
        return comparator(11);
    default:
        return 0;
    }
}

} // namespace

void Sync_Source::reset() {
    const std::lock_guard lock(m_mutex);
    m_connections = {{SM_Output_StatusBit, SM_Input_SMA}};
    m_clock_is_asked_for = false;
    m_asked_period = default_clock_period;
    update();
}

void Sync_Source::connect(switchmatrixoutput_t output, switchmatrixinput_t input, bool connected) {
    const std::lock_guard lock(m_mutex);
    if (connected) {
        m_connections.insert({output, input});
        m_clock_is_asked_for = m_clock_is_asked_for && output != SM_Output_StatusBit;
    } else {
        m_connections.erase({output, input});
    }
    update();
}

bool Sync_Source::is_connected(switchmatrixoutput_t output, switchmatrixinput_t input) const {
    const std::lock_guard lock(m_mutex);
    return m_connections.contains({output, input});
}

void Sync_Source::clear(switchmatrixoutput_t output) {
    const std::lock_guard lock(m_mutex);
    std::erase_if(m_connections, [output](const auto& connection) { return connection.first == output; });
    update();
}

void Sync_Source::set_clock_period(double milliseconds) {
    const std::lock_guard lock(m_mutex);
    constexpr double samples_per_millisecond = samples_per_second / 1000.0;
    const double samples = std::round(milliseconds * samples_per_millisecond);
    if (samples >= 2.0 && samples <= 1e12) {
        m_asked_period = static_cast<std::uint64_t>(samples);
    }
    update();
}

void Sync_Source::ask_for_clock(bool on) {
    const std::lock_guard lock(m_mutex);
    m_clock_is_asked_for = on;
    update();
}

// The clock shows wherever it is led to, since it is there for both ends to see.
void Sync_Source::update() {
    Input_Levels inputs = 0;
    bool clock = m_clock_is_asked_for;
    for (const auto& [output, input] : m_connections) {
        clock = clock || input == SM_Input_SyncClk;
        inputs |= output == SM_Output_StatusBit ? levels_of(input) : 0;
    }
    m_inputs = inputs;
    m_clock_period = clock ? m_asked_period : 0;
}

} // namespace Pelgar::ORBE::npoe_adapter
