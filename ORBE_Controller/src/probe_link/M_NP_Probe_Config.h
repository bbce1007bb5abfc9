// Layer: device controller, probe link. The configuration of one probe: the images of its shift-register
// chains, edited by checked setters and uploaded over the port's I2C link. Called on the host's threads, one
// call at a time. Only the upload, the register reads and the PRBS test touch the link and block.
#pragma once

#include "probe_link/NP_Probe_Layout.h"
#include "probe_link/Shift_Register_Image.h"

#include <array>
#include <cstdint>

namespace Pelgar::ORBE {

class I2C_Over_GSML_Module;
struct ADC_Calibration;

// Setters return 0, or log an error with the number and return -1 when an argument is rejected. None of them
// writes to the probe. Operations that use the link pass its exceptions on.
class NP_Probe_Config_Module {
public:
    using Shank_Image = Shift_Register_Image<probe_layout::shank_bytes>;
    using Base_Image = Shift_Register_Image<probe_layout::base_bytes>;

    struct ADC_Offset_Threshold {
        std::uint32_t offset;
        std::uint32_t threshold;
    };

    // `i2c` must outlive the module.
    explicit NP_Probe_Config_Module(I2C_Over_GSML_Module* i2c);
    ~NP_Probe_Config_Module();
    NP_Probe_Config_Module(const NP_Probe_Config_Module&) = delete;
    NP_Probe_Config_Module& operator=(const NP_Probe_Config_Module&) = delete;

    // Connects the channel (0..383) to its electrode in the bank (0..2); other banks stay connected. Bank 255
    // disconnects the channel from all banks. Channel 191 is left to the internal reference.
    std::int32_t select_electrode(std::uint32_t channel, std::uint32_t bank);

    // The lowest connected bank of the channel, or 255.
    std::uint8_t get_channel_bank(std::uint32_t channel) const;

    // 1 and the electrode's number (0..959) when the channel is connected, else 0 and `*electrode` untouched.
    std::int32_t get_channel_electrode(std::uint32_t channel, std::uint32_t* electrode) const;

    // Prints every channel's electrode to standard output.
    void print_channel_map() const;

    // 0 = external electrode, 1 = tip electrode, 2 = internal reference electrode.
    std::int32_t set_channel_reference(std::uint32_t channel, std::uint32_t reference);

    // As `set_channel_reference`, and takes the bank (0..2) of the internal reference electrode, which is
    // one for the whole probe and a byte: what is none is rejected. A wrong bank of a byte is found by the
    // next call; a wrong channel or reference is logged, changes nothing but the bank, and still answers 0.
    std::int32_t set_reference(std::uint32_t channel, std::uint32_t reference, std::uint32_t int_ref_bank);

    // Gain codes 0..7 of the AP and the LFP band.
    std::int32_t set_channel_gain(std::uint32_t channel, std::uint32_t ap_gain, std::uint32_t lfp_gain);

    // As `set_channel_gain`, and keeps the codes for `get_gain`.
    std::int32_t set_gain(std::uint32_t channel, std::uint32_t ap_gain, std::uint32_t lfp_gain);

    // Answers the AP gain code in both `*ap_gain` and `*lfp_gain`; -1 for a channel out of range.
    std::int32_t get_gain(std::uint32_t channel, std::uint32_t* ap_gain, std::uint32_t* lfp_gain) const;

    // The LFP gain code that was set; a channel out of range throws std::out_of_range.
    std::uint32_t get_lfp_gain(std::uint32_t channel) const;

    std::int32_t set_ap_filter(std::uint32_t channel, bool on);
    std::int32_t set_standby(std::uint32_t channel, bool on);

    // Offset and threshold are kept in memory only.
    std::int32_t set_adc_calibration(const ADC_Calibration* calibration);

    // Switches the reference electrodes on that the channels use and all others off.
    void finalize_references();

    // Finalizes the references and shifts all three chains into the probe: 733 bytes, each a transaction of
    // its own; the base chains twice when `readcheck` is set. Throws
    // std::runtime_error("SR upload status not ok") when a chain does not come out as it went in. The images
    // keep their content whatever happens.
    void upload_configuration(bool readcheck);

    // Shifts `length` bytes into the chain behind the ASIC's register `sr_register`.
    void sr_upload(std::uint8_t sr_register, const std::uint8_t* data, std::uint16_t length, bool readcheck);

    // Reads `count` registers, one transaction each.
    void read_registers(std::uint8_t device, std::uint8_t first_reg, std::uint8_t* buffer,
                        std::uint32_t count);

    // Reads a text that ends with a zero byte or after `max` characters and returns its length. `buffer` must
    // hold max + 1 characters, because a terminating zero is always stored.
    std::uint32_t read_string(std::uint8_t device, std::uint8_t first_reg, char* buffer, std::uint32_t max);

    // Makes serializer and deserializer exchange a pseudo-random bit sequence in place of data.
    void start_prbs_test();

    // Back to normal operation. Returns the number of bit errors; throws
    // std::runtime_error("stop_pbrs_test : Unexpected response 1") (serializer) or "... 2" (deserializer)
    // when a device does not leave the test.
    std::uint32_t stop_prbs_test();

    const Shank_Image& shank_config() const { return m_shank_config; }

    const Base_Image& base_config_even() const { return m_base_config_even; }

    const Base_Image& base_config_odd() const { return m_base_config_odd; }

    // Numbers of channels that use the external, the tip and the internal reference.
    std::uint32_t ext_ref_count() const { return m_ext_ref_count; }

    std::uint32_t tip_ref_count() const { return m_tip_ref_count; }

    std::uint32_t int_ref_count() const { return m_int_ref_count; }

    // Throws std::out_of_range for an ADC of 32 or more.
    const ADC_Offset_Threshold& adc_offset_threshold(std::uint32_t adc) const;

private:
    static bool is_channel(std::uint32_t channel);

    Base_Image& base_config_of(std::uint32_t number);
    void set_electrode(std::uint64_t electrode, bool connected);
    bool is_connected(std::uint64_t electrode) const;
    std::int32_t set_channel_flag(std::uint32_t channel, std::size_t bit, bool on);
    void switch_reference_electrodes(const char* name, std::size_t first, std::size_t second, bool on);
    bool serializer_is_normal();
    bool deserializer_is_normal();

    Shank_Image m_shank_config;
    std::uint32_t m_ext_ref_count = 0;
    std::uint32_t m_tip_ref_count = 0;
    std::uint32_t m_int_ref_count = 0;
    Base_Image m_base_config_even;
    Base_Image m_base_config_odd;
    I2C_Over_GSML_Module* m_i2c;
    std::array<std::uint8_t, probe_layout::channel_count> m_ap_gain{};
    std::array<std::uint8_t, probe_layout::channel_count> m_lfp_gain{};
    std::uint8_t m_int_ref_bank = 0;
    std::array<ADC_Offset_Threshold, probe_layout::adc_count> m_adc_offset_threshold{};
};

} // namespace Pelgar::ORBE
