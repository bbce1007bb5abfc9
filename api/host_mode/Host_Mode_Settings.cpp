// The settings of the host mode: sync, triggers, ADC inputs, standby.
#include "host_mode/Host_Mode.h"

#include "adapter/Adapter_State.h"
#include "modes/Current_Mode.h"

namespace Pelgar::ORBE::npoe_adapter {

namespace {

constexpr double ms_per_second = 1000.0;

} // namespace

NP_ErrorCode Host_Mode::switchmatrix_set(int slotID, switchmatrixoutput_t output, switchmatrixinput_t input,
                                         bool connect) {
    if (const auto refused = check_open(slotID); refused != SUCCESS) {
        return refused;
    }
    m_sync_source.connect(output, input, connect);
    return SUCCESS;
}

NP_ErrorCode Host_Mode::switchmatrix_get(int slotID, switchmatrixoutput_t output, switchmatrixinput_t input,
                                         bool* connected) {
    if (const auto refused = check_open(slotID); refused != SUCCESS) {
        return refused;
    }
    write_to_host(connected, m_sync_source.is_connected(output, input));
    return SUCCESS;
}

NP_ErrorCode Host_Mode::switchmatrix_clear(int slotID, switchmatrixoutput_t output) {
    if (const auto refused = check_open(slotID); refused != SUCCESS) {
        return refused;
    }
    m_sync_source.clear(output);
    return SUCCESS;
}

// Streaming begins with the software trigger, which has no edge.
NP_ErrorCode Host_Mode::setTriggerEdge(int slotID, bool /*rising*/) {
    return check_open(slotID);
}

NP_ErrorCode Host_Mode::setSyncClockFrequency(int slotID, double frequency) {
    if (const auto refused = check_open(slotID); refused != SUCCESS) {
        return refused;
    }
    if (!(frequency > 0.0)) {
        return PARAMETER_INVALID;
    }
    m_sync_source.set_clock_period(ms_per_second / frequency);
    m_sync_source.ask_for_clock(true);
    return SUCCESS;
}

NP_ErrorCode Host_Mode::setSyncClockPeriod(int slotID, int period_ms) {
    if (const auto refused = check_open(slotID); refused != SUCCESS) {
        return refused;
    }
    if (period_ms <= 0) {
        return PARAMETER_INVALID;
    }
    m_sync_source.set_clock_period(period_ms);
    m_sync_source.ask_for_clock(true);
    return SUCCESS;
}

// Sizes and numbers of buffers are this library's own affair.
NP_ErrorCode Host_Mode::setParameter(np_parameter_t parameter, int value) {
    switch (parameter) {
    case NP_PARAM_SYNCSOURCE:
        m_sync_source.ask_for_clock(value == SyncSource_Clock);
        break;
    case NP_PARAM_SYNCPERIOD_MS:
        m_sync_source.set_clock_period(value);
        break;
    case NP_PARAM_SYNCFREQUENCY_HZ:
        m_sync_source.set_clock_period(ms_per_second / value);
        break;
    default:
        break;
    }
    return SUCCESS;
}

NP_ErrorCode Host_Mode::setStdb(int slotID, int portID, int /*dockID*/, int channel, bool standby) {
    if (channel < 0 || channel >= NP1_PROBE_CHANNEL_COUNT) {
        return WRONG_CHANNEL;
    }
    return forward_to_port("setStdb", slotID, portID, [&](auto& controller) {
        return controller.setStdb(port_index(portID), channel, standby);
    });
}

NP_ErrorCode Host_Mode::ADC_enableProbe(int slotID, bool /*enable*/) {
    return check_adc(slotID);
}

NP_ErrorCode Host_Mode::ADC_setVoltageRange(int slotID, ADCrange_t range) {
    if (const auto refused = check_adc(slotID); refused != SUCCESS) {
        return refused;
    }
    return m_adc_inputs.set_range(range) ? SUCCESS : PARAMETER_INVALID;
}

NP_ErrorCode Host_Mode::ADC_getVoltageRange(int slotID, ADCrange_t* range) {
    if (const auto refused = check_adc(slotID); refused != SUCCESS) {
        return refused;
    }
    write_to_host(range, m_adc_inputs.range());
    return SUCCESS;
}

NP_ErrorCode Host_Mode::ADC_setComparatorThreshold(int slotID, int channel, double vlow, double vhigh) {
    if (const auto refused = check_adc(slotID); refused != SUCCESS) {
        return refused;
    }
    if (channel < 0 || channel >= static_cast<int>(host_adc_input_count)) {
        return WRONG_ADCCHANNEL;
    }
    return m_adc_inputs.set_thresholds(channel, {vlow, vhigh}) ? SUCCESS : PARAMETER_INVALID;
}

NP_ErrorCode Host_Mode::ADC_getComparatorThreshold(int slotID, int channel, double* vlow, double* vhigh) {
    if (const auto refused = check_adc(slotID); refused != SUCCESS) {
        return refused;
    }
    ADC_Inputs::Thresholds thresholds;
    if (!m_adc_inputs.get_thresholds(channel, thresholds)) {
        return WRONG_ADCCHANNEL;
    }
    write_to_host(vlow, thresholds.low);
    write_to_host(vhigh, thresholds.high);
    return SUCCESS;
}

} // namespace Pelgar::ORBE::npoe_adapter
