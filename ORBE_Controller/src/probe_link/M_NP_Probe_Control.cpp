#include "probe_link/M_NP_Probe_Control.h"

#include "common/Console.h"
#include "common/Waiting.h"
#include "probe_link/ADC_Calibration.h"
#include "probe_link/M_I2C_Over_GSML.h"
#include "probe_link/NP_Probe_Config_Reader.h"
#include "probe_link/NP_Probe_Registers.h"

#include <loguru.hpp>

#include <chrono>
#include <utility>

namespace Pelgar::ORBE {

using namespace std::chrono_literals;

namespace {

constexpr auto settle_time = 1ms;

constexpr std::uint8_t initial_ap_gain = 4;
constexpr std::uint8_t initial_lfp_gain = 0;

// The middle of the comparators' range.
constexpr std::uint32_t default_comparator = 16;

constexpr std::uint8_t with(std::uint8_t value, std::uint8_t bits) {
    return static_cast<std::uint8_t>(value | bits);
}

constexpr std::uint8_t without(std::uint8_t value, std::uint8_t bits) {
    return static_cast<std::uint8_t>(value & ~bits);
}

} // namespace

NP_Probe_Control_Module::NP_Probe_Control_Module(I2C_Over_GSML_Module* i2c, std::string resource_directory)
    : m_i2c(i2c), m_config(i2c), m_resource_directory(std::move(resource_directory)) {
    VLOG_SCOPE_F(1, "NP_Probe_Control_Module");
}

NP_Probe_Control_Module::~NP_Probe_Control_Module() {
    VLOG_SCOPE_F(1, "~NP_Probe_Control_Module");
}

std::int32_t NP_Probe_Control_Module::np_init() {
    VLOG_SCOPE_F(1, "np_init");
    for (const std::uint8_t reg : {asic::cal_mod, asic::test_3, asic::test_4, asic::test_5, asic::test_6,
                                   asic::test_7, asic::test_9}) {
        write(reg, 0);
    }
    reset_image();
    write(asic::op_mode, asic::op_mode_record);
    power_up();
    apply_adc_calibration();
    configure_serializer(true);
    return 0;
}

void NP_Probe_Control_Module::np_quick_init() {
    VLOG_SCOPE_F(1, "np_quick_init");
    read(asic::link_power);
    wait_for(settle_time);
    write(asic::link_power, asic::link_power_quick_first);
    wait_for(settle_time);
    write(asic::link_power, asic::link_power_all);
    wait_for(settle_time);
}

std::int32_t NP_Probe_Control_Module::setOPMODE(int mode) {
    VLOG_SCOPE_F(1, "setOPMODE");
    switch (mode) {
    case 0:
        write(asic::op_mode, asic::op_mode_record);
        return 0;
    case 1:
        write(asic::op_mode, asic::op_mode_record | asic::op_mode_calibrate);
        return 0;
    case 2:
        write(asic::op_mode, asic::op_mode_record | asic::op_mode_digital_test);
        return 0;
    default:
        console::err("invalid param 1\n");
        return -1;
    }
}

std::int32_t NP_Probe_Control_Module::setTestSignal(bool on) {
    VLOG_SCOPE_F(1, "setTestSignal");
    const std::uint8_t cal_mod = read(asic::cal_mod);
    write(asic::cal_mod,
          on ? with(cal_mod, asic::cal_mod_osc_standby) : without(cal_mod, asic::cal_mod_osc_standby));
    return 0;
}

std::int32_t NP_Probe_Control_Module::set_cal_mode(std::uint32_t mode) {
    const std::uint8_t kept = read(asic::cal_mod) & asic::cal_mod_kept;
    std::uint8_t selection = 0;
    switch (mode) {
    case 0:
        selection = asic::cal_mod_mode_0;
        break;
    case 1:
        selection = asic::cal_mod_mode_1;
        break;
    case 2:
        break;
    case 3:
        selection = asic::cal_mod_mode_3;
        break;
    default:
        LOG_F(ERROR, "invalid parameter mode: %i", mode);
        return -1;
    }
    write(asic::cal_mod, with(kept, selection));
    return 0;
}

void NP_Probe_Control_Module::configure_serializer(bool on) {
    VLOG_SCOPE_F(1, "configure_serializer");
    m_i2c->write_serializer(serializer::config_14, serializer::config_14_value);
    m_i2c->write_serializer(serializer::config_15, on ? serializer::config_15_on : serializer::config_15_off);
}

std::int32_t NP_Probe_Control_Module::bist_PSB() {
    VLOG_SCOPE_F(1, "bist_PSB");
    write(asic::link_power, asic::link_power_all);
    for (const std::uint8_t reg :
         {asic::cal_mod, asic::test_3, asic::test_4, asic::test_5, asic::test_6, asic::test_7}) {
        write(reg, 0);
    }
    setOPMODE(2);
    return 0;
}

std::int32_t NP_Probe_Control_Module::bist_channel() {
    VLOG_SCOPE_F(1, "bist_channel");
    VLOG_F(1, "2.Enable the HS oscillator: set the OSC_STDB bit in the CAL_MOD register to 1.");
    setTestSignal(true);
    VLOG_F(1, "3.Set the PIX_CAL bit in the CAL_MOD register to 1.");
    set_cal_mode(1);
    setOPMODE(1);
    return 0;
}

std::int32_t NP_Probe_Control_Module::bist_pixel() {
    VLOG_SCOPE_F(1, "bist_pixel");
    VLOG_F(1, "2.Enable the HS oscillator: set the OSC_STDB bit in the CAL_MOD register to 1.");
    setTestSignal(true);
    VLOG_F(1, "3.Set the PIX_CAL bit in the CAL_MOD register to 1.");
    set_cal_mode(0);
    VLOG_F(1,
           "4+5.Set the CAL bit in the OP_MODE register to 1. Set the REC bit in the OP_MODE register to 1");
    setOPMODE(1);
    return 0;
}

std::int32_t NP_Probe_Control_Module::bist_end() {
    VLOG_SCOPE_F(1, "bist_end");
    VLOG_F(1, "2.Disable the HS oscillator");
    setTestSignal(false);
    set_cal_mode(2);
    setOPMODE(0);
    return 0;
}

void NP_Probe_Control_Module::write(std::uint8_t reg, std::uint8_t value) {
    m_i2c->write_asic(reg, value, false);
}

std::uint8_t NP_Probe_Control_Module::read(std::uint8_t reg) {
    std::uint8_t value = 0;
    return m_i2c->read_asic(reg, &value);
}

void NP_Probe_Control_Module::reset_image() {
    for (std::uint32_t channel = 0; channel < probe_layout::channel_count; ++channel) {
        if (channel != probe_layout::reference_channel) {
            m_config.select_electrode(channel, 0);
        }
        m_config.set_channel_reference(channel, probe_layout::reference_ext);
        m_config.set_channel_gain(channel, initial_ap_gain, initial_lfp_gain);
        m_config.set_standby(channel, false);
        m_config.set_ap_filter(channel, false);
    }
}

void NP_Probe_Control_Module::power_up() {
    std::uint8_t power = read(asic::link_power);
    if ((power & asic::link_power_first) == 0) {
        power = with(power, asic::link_power_first);
        // The write that switches this field on may go unacknowledged; its repetition may not.
        m_i2c->write_asic(asic::link_power, power, true);
        write(asic::link_power, power);
    }
    write(asic::link_power, with(power, asic::link_power_last));
}

void NP_Probe_Control_Module::apply_adc_calibration() {
    NP_Probe_Config_Reader reader(m_resource_directory);
    if (reader.load_adc_calibration_data_from_file()) {
        VLOG_F(1, "Using ADC config from file");
        for (const ADC_Calibration& record : reader.adc_calibration()) {
            m_config.set_adc_calibration(&record);
        }
        return;
    }
    LOG_F(INFO, "Using default ADC config");
    for (std::uint32_t adc = 0; adc < probe_layout::adc_count; ++adc) {
        const ADC_Calibration record{.adc = adc,
                                     .comp_p = default_comparator,
                                     .comp_n = default_comparator,
                                     .slope = 0,
                                     .coarse = 0,
                                     .fine = 0,
                                     .cfix = 0,
                                     .offset = 0,
                                     .threshold = 0};
        m_config.set_adc_calibration(&record);
    }
}

} // namespace Pelgar::ORBE
