#include "Virtual_Headstage.h"

#include <utility>

namespace Pelgar::ORBE::test {

namespace {

constexpr std::uint8_t command = 0x79;
constexpr std::uint8_t done = 0xC3;
constexpr std::uint8_t not_done = 0x00;
constexpr std::uint8_t read_bit = 0x01;

constexpr std::size_t device_index = 1;
constexpr std::size_t register_index = 2;
constexpr std::size_t count_index = 3;
constexpr std::size_t header_length = 4;

constexpr std::uint8_t device_id = 0x1E;
constexpr std::uint8_t serializer_id = 9;
constexpr std::uint8_t deserializer_id = 10;
constexpr std::uint8_t mode = 0x04;
constexpr std::uint8_t serializer_idle = 0x43;
constexpr std::uint8_t deserializer_normal = 0x87;

// The probe's mode registers.
constexpr std::uint8_t op_mode = 0x00;
constexpr std::uint8_t op_mode_calibrate = 0x20;
constexpr std::uint8_t op_mode_digital_test = 0x10;
constexpr std::uint8_t cal_mod = 0x02;
constexpr std::uint8_t cal_mod_oscillator = 0x10;
constexpr std::uint8_t cal_mod_inputs = 0xC0; // the pixels, or the channels

constexpr std::uint8_t probe_part_number = 40;
constexpr std::uint8_t headstage_part_number = 20;
constexpr std::uint8_t no_device = 0xFF; // what a read gets from a bus that nobody drives

bool is_read(const Link_Frame& frame) {
    return (frame[device_index] & read_bit) != 0;
}

} // namespace

Virtual_Headstage::Virtual_Headstage()
    : m_serializer(I2C_Device::Memory::lost_without_power,
                   {{device_id, serializer_id}, {mode, serializer_idle}}),
      m_deserializer(I2C_Device::Memory::lost_without_power,
                     {{device_id, deserializer_id}, {mode, deserializer_normal}}),
      m_probe_eeprom(
          I2C_Device::Memory::kept,
          {{0, 0x88}, {1, 0x77}, {2, 0x66}, {3, 0x55}, {4, 0x44}, {5, 0x33}, {6, 0x22}, {7, 0x11}}),
      m_headstage_eeprom(I2C_Device::Memory::kept, {{0, 0x05}, {1, 0x02}}),
      m_devices{{serializer, &m_serializer},
                {deserializer, &m_deserializer},
                {probe_eeprom, &m_probe_eeprom},
                {headstage_eeprom, &m_headstage_eeprom},
                {probe_asic, &m_asic}} {
    m_probe_eeprom.set_text(probe_part_number, "PRB_1_4_0480_1");
    m_headstage_eeprom.set_text(headstage_part_number, "NP2_HS_30");
}

std::vector<std::uint8_t> Virtual_Headstage::take(std::uint8_t byte, bool link_is_up) {
    const std::lock_guard lock(m_mutex);
    if (!link_is_up) {
        m_incoming.clear();
        return {};
    }
    if (m_incoming.empty() && byte != command) {
        ++m_stray_bytes;
        return {};
    }
    m_incoming.push_back(byte);
    if (!frame_is_whole()) {
        return {};
    }
    m_frames.push_back(std::exchange(m_incoming, {}));
    return carry_out(m_frames.back());
}

void Virtual_Headstage::lose_power() {
    const std::lock_guard lock(m_mutex);
    m_incoming.clear();
    for (const auto& [address, device] : m_devices) {
        device->lose_power();
    }
}

bool Virtual_Headstage::last_answer_is_late() const {
    const std::lock_guard lock(m_mutex);
    return m_late;
}

Probe_Output Virtual_Headstage::probe_output() const {
    const std::lock_guard lock(m_mutex);
    const std::uint8_t mode_of_operation = m_asic.value(op_mode);
    const std::uint8_t calibration = m_asic.value(cal_mod);
    if ((mode_of_operation & op_mode_digital_test) != 0) {
        return Probe_Output::test_pattern;
    }
    const bool signal = (mode_of_operation & op_mode_calibrate) != 0 &&
                        (calibration & cal_mod_oscillator) != 0 && (calibration & cal_mod_inputs) != 0;
    return signal ? Probe_Output::test_signal : Probe_Output::recording;
}

bool Virtual_Headstage::frame_is_whole() const {
    if (m_incoming.size() < header_length) {
        return false;
    }
    const std::size_t data = is_read(m_incoming) ? 0 : m_incoming[count_index];
    return m_incoming.size() == header_length + data;
}

std::vector<std::uint8_t> Virtual_Headstage::carry_out(const Link_Frame& frame) {
    const auto fault = m_faults.at(m_frames.size());
    m_late = fault == Link_Fault::late;
    if (fault == Link_Fault::silence) {
        return {};
    }
    I2C_Device* const device = device_at(frame[device_index] & static_cast<std::uint8_t>(~read_bit));
    const bool fails = fault == Link_Fault::wrong_acknowledge || device == nullptr;
    const bool writes = !fails && fault != Link_Fault::lost_write;
    std::vector<std::uint8_t> answer{fails ? not_done : done};
    for (std::uint8_t i = 0; i < frame[count_index]; ++i) {
        const auto reg = static_cast<std::uint8_t>(frame[register_index] + i);
        if (is_read(frame)) {
            // The bridge sends the bytes that were asked for even when it could not read them.
            answer.push_back(fails ? no_device : device->read(reg));
        } else if (writes) {
            device->write(reg, frame[header_length + i]);
        }
    }
    return answer;
}

I2C_Device* Virtual_Headstage::device_at(std::uint8_t address) {
    const auto found = m_devices.find(address);
    return found == m_devices.end() ? nullptr : found->second;
}

std::uint8_t Virtual_Headstage::value(std::uint8_t device, std::uint8_t reg) const {
    const std::lock_guard lock(m_mutex);
    return m_devices.at(device)->value(reg);
}

void Virtual_Headstage::set(std::uint8_t device, std::uint8_t reg, std::uint8_t value) {
    const std::lock_guard lock(m_mutex);
    m_devices.at(device)->set(reg, value);
}

void Virtual_Headstage::flicker(std::uint8_t device, std::uint8_t reg) {
    const std::lock_guard lock(m_mutex);
    m_devices.at(device)->flicker(reg);
}

void Virtual_Headstage::set_text(std::uint8_t device, std::uint8_t reg, std::string_view text) {
    const std::lock_guard lock(m_mutex);
    m_devices.at(device)->set_text(reg, text);
}

std::vector<Probe_ASIC::Upload> Virtual_Headstage::uploads(std::uint8_t chain) const {
    const std::lock_guard lock(m_mutex);
    return m_asic.uploads(chain);
}

std::vector<std::uint8_t> Virtual_Headstage::chain(std::uint8_t chain) const {
    const std::lock_guard lock(m_mutex);
    return m_asic.chain(chain);
}

std::vector<Link_Frame> Virtual_Headstage::frames() const {
    const std::lock_guard lock(m_mutex);
    return m_frames;
}

std::size_t Virtual_Headstage::stray_bytes() const {
    const std::lock_guard lock(m_mutex);
    return m_stray_bytes;
}

void Virtual_Headstage::forget_frames() {
    const std::lock_guard lock(m_mutex);
    m_frames.clear();
    m_stray_bytes = 0;
}

void Virtual_Headstage::fail_once(std::size_t transaction, Link_Fault fault) {
    const std::lock_guard lock(m_mutex);
    m_faults.strike_once(transaction, fault);
}

void Virtual_Headstage::fail_from(std::size_t transaction, Link_Fault fault) {
    const std::lock_guard lock(m_mutex);
    m_faults.strike_from(transaction, fault);
}

void Virtual_Headstage::clear_faults() {
    const std::lock_guard lock(m_mutex);
    m_faults.clear();
}

} // namespace Pelgar::ORBE::test
