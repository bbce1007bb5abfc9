// Layer: device controller, probe link. Initialises one port's probe, switches its operating mode and runs
// the register sequences of its self tests. Called on the host's threads, one call at a time; every operation
// blocks on the port's I2C link and passes its exceptions on, the probe then being left part-way.
#pragma once

#include "probe_link/M_NP_Probe_Config.h"
#include "resources/Resource_Directory.h"

#include <cstdint>
#include <string>

namespace Pelgar::ORBE {

class I2C_Over_GSML_Module;

class NP_Probe_Control_Module {
public:
    // `i2c` must outlive the module. The ADC calibration file of `np_init` is looked for in
    // `resource_directory`.
    explicit NP_Probe_Control_Module(I2C_Over_GSML_Module* i2c,
                                     std::string resource_directory = default_resource_directory());
    ~NP_Probe_Control_Module();
    NP_Probe_Control_Module(const NP_Probe_Control_Module&) = delete;
    NP_Probe_Control_Module& operator=(const NP_Probe_Control_Module&) = delete;

    // The configuration of this port's probe.
    NP_Probe_Config_Module& config() { return m_config; }

    const NP_Probe_Config_Module& config() const { return m_config; }

    // Brings a freshly powered probe into recording mode and sets its configuration image (not uploaded) to
    // bank 0, external reference, AP gain code 4, LFP gain code 0, filter off, and the ADC calibration of the
    // default file or, without one, mid-scale comparators. Always 0.
    std::int32_t np_init();

    // Powers the probe's link up and nothing else.
    void np_quick_init();

    // 0 = record, 1 = record with calibration signal, 2 = digital test pattern. -1 for any other mode.
    std::int32_t setOPMODE(int mode);

    // Switches the headstage's test signal oscillator. Always 0.
    std::int32_t setTestSignal(bool on);

    // Selects where the calibration signal is fed in: 0, 1, 3, or 2 for nowhere. -1 for any other mode, which
    // writes nothing.
    std::int32_t set_cal_mode(std::uint32_t mode);

    void configure_serializer(bool on);

    // Self tests: the probe sends its test pattern; the test signal goes into the channels; into the pixels;
    // and back to recording. Always 0.
    std::int32_t bist_PSB();
    std::int32_t bist_channel();
    std::int32_t bist_pixel();
    std::int32_t bist_end();

private:
    void write(std::uint8_t reg, std::uint8_t value);
    std::uint8_t read(std::uint8_t reg);
    void reset_image();
    void power_up();
    void apply_adc_calibration();

    I2C_Over_GSML_Module* m_i2c;
    NP_Probe_Config_Module m_config;
    std::string m_resource_directory;
};

} // namespace Pelgar::ORBE
