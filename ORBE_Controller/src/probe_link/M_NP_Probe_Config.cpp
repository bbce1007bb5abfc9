#include "probe_link/M_NP_Probe_Config.h"

#include "common/Console.h"
#include "probe_link/ADC_Calibration.h"
#include "probe_link/M_I2C_Over_GSML.h"
#include "probe_link/NP_Probe_Registers.h"

#include <loguru.hpp>

#include <chrono>
#include <stdexcept>

namespace Pelgar::ORBE {

using namespace probe_layout;

namespace {

constexpr std::int32_t accepted = 0;
constexpr std::int32_t rejected = -1;

std::size_t slot_of(std::uint32_t channel) {
    return channel / 2;
}

std::size_t reference_group_of(std::uint32_t channel) {
    return base_references + reference_count * (base_slots - 1 - slot_of(channel));
}

std::size_t channel_byte_of(std::uint32_t channel) {
    return base_channel_bytes + base_channel_byte_width * slot_of(channel);
}

std::size_t shank_bit_of(std::size_t electrode) {
    return electrode % 2 != 0 ? shank_electrode_1 - electrode / 2 : shank_electrode_0 + electrode / 2;
}

bool exceeds(std::uint32_t value, unsigned width) {
    return value >> width != 0;
}

// Adds a change of -1, 0 or +1.
void add(std::uint32_t& count, int change) {
    count += static_cast<std::uint32_t>(change);
}

} // namespace

NP_Probe_Config_Module::NP_Probe_Config_Module(I2C_Over_GSML_Module* i2c) : m_i2c(i2c) {
    console::out("NP_Probe_Config_Module ctor\n");
}

NP_Probe_Config_Module::~NP_Probe_Config_Module() {
    console::out("NP_Probe_Config_Module dtor\n");
}

std::int32_t NP_Probe_Config_Module::select_electrode(std::uint32_t channel, std::uint32_t bank) {
    if (channel == reference_channel) {
        LOG_F(ERROR, "invalid channel: %i. selection of reference electrode 191/575/959 not allowed",
              channel);
        return rejected;
    }
    if (channel >= channel_count) {
        LOG_F(ERROR, "invalid channel: %i. index out of bound.", channel);
        return rejected;
    }
    if (bank == short_bank && channel >= short_bank_channel_count) {
        LOG_F(ERROR,
              "invalid electrode bank: %i for channel %i. Only bank0/1 are valid in channel range 192..383.",
              bank, channel);
        return rejected;
    }
    if (bank == disconnected_bank) {
        for (std::uint32_t each = 0; each < bank_count; ++each) {
            set_electrode(each * channel_count + channel, false);
        }
        return accepted;
    }
    if (bank >= bank_count) {
        LOG_F(ERROR, "invalid electrode bank: %i", bank);
        return rejected;
    }
    set_electrode(bank * channel_count + channel, true);
    return accepted;
}

std::uint8_t NP_Probe_Config_Module::get_channel_bank(std::uint32_t channel) const {
    for (std::uint8_t bank = 0; bank < bank_count; ++bank) {
        if (is_connected(std::uint64_t{bank} * channel_count + channel)) {
            return bank;
        }
    }
    return disconnected_bank;
}

std::int32_t NP_Probe_Config_Module::get_channel_electrode(std::uint32_t channel,
                                                           std::uint32_t* electrode) const {
    const std::uint8_t bank = get_channel_bank(channel);
    if (bank == disconnected_bank) {
        return 0;
    }
    *electrode = bank * channel_count + channel;
    return 1;
}

void NP_Probe_Config_Module::print_channel_map() const {
    for (std::uint32_t channel = 0; channel < channel_count; ++channel) {
        std::uint32_t electrode = 0;
        if (get_channel_electrode(channel, &electrode) != 0) {
            console::out("Channel ", channel, " pixel mapping ", electrode, '\n');
        } else {
            console::out("Channel ", channel, " not assigned\n");
        }
    }
}

std::int32_t NP_Probe_Config_Module::set_channel_reference(std::uint32_t channel, std::uint32_t reference) {
    if (!is_channel(channel)) {
        return rejected;
    }
    if (reference >= reference_count) {
        LOG_F(ERROR, "invalid channel reference: %i", reference);
        return rejected;
    }
    Base_Image& base = base_config_of(channel);
    const std::size_t group = reference_group_of(channel);
    const std::array<std::uint32_t*, reference_count> counts{&m_ext_ref_count, &m_tip_ref_count,
                                                             &m_int_ref_count};
    for (std::size_t each = 0; each < reference_count; ++each) {
        add(*counts[each], base.set_bit(group + each, false));
    }
    add(*counts[reference], base.set_bit(group + reference, true));
    return accepted;
}

std::int32_t NP_Probe_Config_Module::set_reference(std::uint32_t channel, std::uint32_t reference,
                                                   std::uint32_t int_ref_bank) {
    // The bank that is looked at is the one an earlier call left behind; the new one is looked at next time.
    if (m_int_ref_bank >= bank_count) {
        LOG_F(ERROR, "invalid channel internal reference: %i", m_int_ref_bank);
        return rejected;
    }
    if (exceeds(int_ref_bank, int_ref_bank_width)) {
        // Kept, it would have every later call rejected.
        LOG_F(ERROR, "invalid channel internal reference: %i", int_ref_bank);
        return rejected;
    }
    m_int_ref_bank = static_cast<std::uint8_t>(int_ref_bank);
    set_channel_reference(channel, reference);
    return accepted;
}

std::int32_t NP_Probe_Config_Module::set_channel_gain(std::uint32_t channel, std::uint32_t ap_gain,
                                                      std::uint32_t lfp_gain) {
    if (!is_channel(channel)) {
        return rejected;
    }
    if (ap_gain >= gain_code_count) {
        LOG_F(ERROR, "invalid AP gain: %i", ap_gain);
        return rejected;
    }
    if (lfp_gain >= gain_code_count) {
        LOG_F(ERROR, "invalid LFP gain: %i", lfp_gain);
        return rejected;
    }
    Base_Image& base = base_config_of(channel);
    std::size_t position = channel_byte_of(channel);
    base.write_bits(position, ap_gain, gain_code_width);
    base.write_bits(position, lfp_gain, gain_code_width);
    return accepted;
}

std::int32_t NP_Probe_Config_Module::set_gain(std::uint32_t channel, std::uint32_t ap_gain,
                                              std::uint32_t lfp_gain) {
    if (set_channel_gain(channel, ap_gain, lfp_gain) != accepted) {
        return rejected;
    }
    checked_at(m_ap_gain, channel) = static_cast<std::uint8_t>(ap_gain);
    checked_at(m_lfp_gain, channel) = static_cast<std::uint8_t>(lfp_gain);
    return accepted;
}

std::int32_t NP_Probe_Config_Module::get_gain(std::uint32_t channel, std::uint32_t* ap_gain,
                                              std::uint32_t* lfp_gain) const {
    if (channel >= channel_count) {
        return rejected;
    }
    *ap_gain = checked_at(m_ap_gain, channel);
    *lfp_gain = checked_at(m_ap_gain, channel);
    return accepted;
}

std::uint32_t NP_Probe_Config_Module::get_lfp_gain(std::uint32_t channel) const {
    return checked_at(m_lfp_gain, channel);
}

std::int32_t NP_Probe_Config_Module::set_ap_filter(std::uint32_t channel, bool on) {
    return set_channel_flag(channel, channel_ap_filter_bit, on);
}

std::int32_t NP_Probe_Config_Module::set_standby(std::uint32_t channel, bool on) {
    return set_channel_flag(channel, channel_standby_bit, on);
}

std::int32_t NP_Probe_Config_Module::set_adc_calibration(const ADC_Calibration* calibration) {
    const ADC_Calibration& record = *calibration;
    if (record.adc >= adc_count) {
        LOG_F(ERROR, "ADC channel out of bound: %i", record.adc);
        return rejected;
    }

    // In the order in which they are checked: the first that does not fit is the one that is reported.
    struct Field {
        const char* name;
        std::uint32_t value;
        unsigned width;
    };

    for (const Field& field :
         {Field{"CompP", record.comp_p, comp_p_width}, Field{"CompN", record.comp_n, comp_n_width},
          Field{"Cfix", record.cfix, cfix_width}, Field{"Slope", record.slope, slope_width},
          Field{"Coarse", record.coarse, coarse_width}, Field{"Fine", record.fine, fine_width}}) {
        if (exceeds(field.value, field.width)) {
            LOG_F(ERROR, "ADC%i %s out of bound: %i", record.adc, field.name, field.value);
            return rejected;
        }
    }

    // Every second ADC belongs to the same chain, and two ADCs of a chain share a group.
    Base_Image& base = base_config_of(record.adc);
    const std::size_t group = record.adc / 4;
    const std::size_t place = record.adc / 2 % 2;
    std::size_t comparator = base_first_comparator + adc_comparator_width * place - adc_group_width * group;
    base.write_bits(comparator, record.comp_p, comp_p_width);
    base.write_bits(comparator, record.comp_n, comp_n_width);
    std::size_t ramp = base_first_ramp + adc_ramp_width * place - adc_group_width * group;
    base.write_bits(ramp, record.slope, slope_width);
    base.write_bits(ramp, record.fine, fine_width);
    base.write_bits(ramp, record.coarse, coarse_width);
    base.write_bits(ramp, record.cfix, cfix_width);
    checked_at(m_adc_offset_threshold, record.adc) = {record.offset, record.threshold};
    return accepted;
}

void NP_Probe_Config_Module::finalize_references() {
    LOG_F(INFO, "%i channels use EXT electrode reference", m_ext_ref_count);
    switch_reference_electrodes("Ext", shank_ext_electrode_1, shank_ext_electrode_2, m_ext_ref_count != 0);
    LOG_F(INFO, "%i channels use TIP electrode reference", m_tip_ref_count);
    switch_reference_electrodes("Tip", shank_tip_electrode_1, shank_tip_electrode_2, m_tip_ref_count != 0);

    for (std::uint32_t bank = 0; bank < bank_count; ++bank) {
        set_electrode(bank * channel_count + reference_channel, false);
    }
    if (m_int_ref_count != 0) {
        LOG_F(INFO, "%i channels have internal references selected. Connecting to internal reference bank %i",
              m_int_ref_count, m_int_ref_bank);
        set_electrode(m_int_ref_bank * channel_count + reference_channel, true);
    } else {
        LOG_F(INFO, "no internal references selected. %d", 0);
    }
}

void NP_Probe_Config_Module::upload_configuration(bool readcheck) {
    finalize_references();
    const auto start = std::chrono::steady_clock::now();

    LOG_F(INFO, "start upload shank configuration on probe. SHANKCONFIGURATION_SIZE %d.",
          static_cast<int>(shank_bytes));
    // The ASIC's status is not to be trusted for the shank chain, so that chain is never read back.
    sr_upload(asic::sr_shank, m_shank_config.bytes().data(), shank_bytes, false);
    if (readcheck) {
        LOG_F(INFO, "[ASIC Bug Workaround] readcheck on SR_CHAIN1 ignored %d.", 0);
    }

    // The log counts channels from 1, so the chain of channels 0, 2, 4, ... is the odd one there.
    LOG_F(INFO, "start upload odd channel base configuration on probe. BASECONFIGURATION_SIZE : %d",
          static_cast<int>(base_bytes));
    sr_upload(asic::sr_base_even, m_base_config_even.bytes().data(), base_bytes, readcheck);
    LOG_F(INFO, "start upload even channel base configuration on probe. BASECONFIGURATION_SIZE : %d",
          static_cast<int>(base_bytes));
    sr_upload(asic::sr_base_odd, m_base_config_odd.bytes().data(), base_bytes, readcheck);
    LOG_F(INFO, "start upload ADC calibration offset / threshold on probe.%d", 0);

    const auto duration = std::chrono::steady_clock::now() - start;
    console::out("Configuration loaded in ", std::chrono::floor<std::chrono::seconds>(duration).count(),
                 " second.\n");
    m_i2c->print_statistics();
}

void NP_Probe_Config_Module::sr_upload(std::uint8_t sr_register, const std::uint8_t* data,
                                       std::uint16_t length, bool readcheck) {
    // The ASIC judges a chain by what the second pass pushes out of it.
    const int passes = readcheck ? 2 : 1;
    for (int pass = 0; pass < passes; ++pass) {
        m_i2c->write_asic(asic::sr_length_low, static_cast<std::uint8_t>(length & 0xFF), false);
        m_i2c->write_asic(asic::sr_length_high, static_cast<std::uint8_t>(length >> 8), false);
        for (std::size_t i = 0; i < length; ++i) {
            m_i2c->write_asic(sr_register, reverse_bits(data[i]), false);
        }
    }
    if (!readcheck) {
        return;
    }
    std::uint8_t read_back = 0;
    const unsigned status = m_i2c->read_asic(asic::sr_status, &read_back);
    LOG_F(INFO, "SR upload readcheck status: %02Xh.", status);
    if (status < asic::sr_status_ok) {
        throw std::runtime_error("SR upload status not ok");
    }
    LOG_F(INFO, "SR upload status ok. (%02Xh).", status);
}

void NP_Probe_Config_Module::read_registers(std::uint8_t device, std::uint8_t first_reg, std::uint8_t* buffer,
                                            std::uint32_t count) {
    for (std::uint32_t i = 0; i < count; ++i) {
        m_i2c->qbsc_readI2C(device, static_cast<std::uint8_t>(first_reg + i), &buffer[i]);
    }
}

std::uint32_t NP_Probe_Config_Module::read_string(std::uint8_t device, std::uint8_t first_reg, char* buffer,
                                                  std::uint32_t max) {
    std::uint32_t length = 0;
    while (length < max) {
        std::uint8_t character = 0;
        m_i2c->qbsc_readI2C(device, static_cast<std::uint8_t>(first_reg + length), &character);
        if (character == 0) {
            break;
        }
        buffer[length++] = static_cast<char>(character);
    }
    buffer[length] = '\0';
    return length;
}

void NP_Probe_Config_Module::start_prbs_test() {
    // A device that is not in normal operation is reported and switched nevertheless.
    serializer_is_normal();
    deserializer_is_normal();
    LOG_F(INFO, "switch on deserializer PRBS %c", ' ');
    m_i2c->write_deserializer(deserializer::mode, deserializer::mode_prbs);
    LOG_F(INFO, "switch on serializer PRBS %c", ' ');
    m_i2c->write_serializer(serializer::mode, serializer::mode_prbs);
}

std::uint32_t NP_Probe_Config_Module::stop_prbs_test() {
    LOG_F(INFO, "switch off serializer PRBS %c", ' ');
    // Written twice, so that the serializer leaves the test even when it missed one write.
    m_i2c->write_serializer(serializer::mode, serializer::mode_normal);
    m_i2c->write_serializer(serializer::mode, serializer::mode_normal);
    LOG_F(INFO, "switch off deserializer PRBS %c", ' ');
    m_i2c->write_deserializer(deserializer::mode, deserializer::mode_normal);
    if (!serializer_is_normal()) {
        throw std::runtime_error("stop_pbrs_test : Unexpected response 1");
    }
    if (!deserializer_is_normal()) {
        throw std::runtime_error("stop_pbrs_test : Unexpected response 2");
    }
    std::uint8_t errors = 0;
    m_i2c->read_deserializer(deserializer::prbs_error_count, &errors);
    LOG_F(INFO, "deserializer PRBS error count:%u", errors);
    return errors;
}

const NP_Probe_Config_Module::ADC_Offset_Threshold&
NP_Probe_Config_Module::adc_offset_threshold(std::uint32_t adc) const {
    return checked_at(m_adc_offset_threshold, adc);
}

bool NP_Probe_Config_Module::is_channel(std::uint32_t channel) {
    if (channel >= channel_count) {
        LOG_F(ERROR, "invalid channel: %i", channel);
        return false;
    }
    return true;
}

NP_Probe_Config_Module::Base_Image& NP_Probe_Config_Module::base_config_of(std::uint32_t number) {
    return number % 2 != 0 ? m_base_config_odd : m_base_config_even;
}

void NP_Probe_Config_Module::set_electrode(std::uint64_t electrode, bool connected) {
    if (electrode < electrode_count) {
        m_shank_config.set_bit(shank_bit_of(static_cast<std::size_t>(electrode)), connected);
    }
}

bool NP_Probe_Config_Module::is_connected(std::uint64_t electrode) const {
    return electrode < electrode_count &&
           m_shank_config.bit(shank_bit_of(static_cast<std::size_t>(electrode)));
}

std::int32_t NP_Probe_Config_Module::set_channel_flag(std::uint32_t channel, std::size_t bit, bool on) {
    if (!is_channel(channel)) {
        return rejected;
    }
    base_config_of(channel).set_bit(channel_byte_of(channel) + bit, on);
    return accepted;
}

void NP_Probe_Config_Module::switch_reference_electrodes(const char* name, std::size_t first,
                                                         std::size_t second, bool on) {
    m_shank_config.set_bit(first, on);
    m_shank_config.set_bit(second, on);
    LOG_F(INFO, "  -> %sElectrode1/2 %s.", name, on ? "enabled" : "disabled");
}

bool NP_Probe_Config_Module::serializer_is_normal() {
    std::uint8_t mode = 0;
    m_i2c->read_serializer(serializer::mode, &mode);
    if (mode != serializer::mode_normal) {
        LOG_F(ERROR, "serializer[0x04]==%2X expected 0x83", mode);
        return false;
    }
    return true;
}

bool NP_Probe_Config_Module::deserializer_is_normal() {
    std::uint8_t mode = 0;
    m_i2c->read_deserializer(deserializer::mode, &mode);
    if (mode != deserializer::mode_normal) {
        LOG_F(ERROR, "deserializer[0x04]==%2X expected 0x87", mode);
        return false;
    }
    return true;
}

} // namespace Pelgar::ORBE
