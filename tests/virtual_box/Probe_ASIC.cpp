#include "Probe_ASIC.h"

namespace Pelgar::ORBE::test {

namespace {

constexpr std::uint8_t status = 0x08;
constexpr std::uint8_t status_good = 0x80;
constexpr std::uint8_t length_high = 0x0F;
constexpr std::uint8_t length_low = 0x10;

constexpr std::size_t shank_length = 121;
constexpr std::size_t base_length = 306;

constexpr bool is_chain(std::uint8_t reg) {
    return reg == Probe_ASIC::shank_chain || reg == Probe_ASIC::base_chain_of_even_channels ||
           reg == Probe_ASIC::base_chain_of_odd_channels;
}

// A byte goes in with its first bit foremost, which is its highest.
std::uint8_t mirrored(std::uint8_t byte) {
    unsigned result = 0;
    for (unsigned i = 0; i < 8; ++i) {
        result = (result << 1U) | ((unsigned{byte} >> i) & 1U);
    }
    return static_cast<std::uint8_t>(result);
}

} // namespace

Probe_ASIC::Probe_ASIC() : I2C_Device(Memory::lost_without_power) {}

std::uint8_t Probe_ASIC::read(std::uint8_t reg) {
    if (reg == status) {
        return last_chain_is_good() ? status_good : 0;
    }
    return I2C_Device::read(reg);
}

void Probe_ASIC::write(std::uint8_t reg, std::uint8_t value) {
    I2C_Device::write(reg, value);
    if (reg == length_high) {
        m_announced = static_cast<std::size_t>(value) * 256 + I2C_Device::value(length_low);
        m_begins = true;
    } else if (is_chain(reg)) {
        shift_in(reg, mirrored(value));
    }
}

void Probe_ASIC::lose_power() {
    I2C_Device::lose_power();
    m_uploads.clear();
    m_announced = 0;
    m_begins = false;
    m_last_chain = 0;
}

const std::vector<Probe_ASIC::Upload>& Probe_ASIC::uploads(std::uint8_t chain) const {
    static const std::vector<Upload> none;
    const auto found = m_uploads.find(chain);
    return found == m_uploads.end() ? none : found->second;
}

std::vector<std::uint8_t> Probe_ASIC::chain(std::uint8_t chain) const {
    const auto& all = uploads(chain);
    return all.empty() ? std::vector<std::uint8_t>{} : all.back().bytes;
}

void Probe_ASIC::shift_in(std::uint8_t chain, std::uint8_t byte) {
    auto& all = m_uploads[chain];
    if (m_begins || all.empty()) {
        all.push_back({m_announced, {}});
        m_begins = false;
    }
    all.back().bytes.push_back(byte);
    m_last_chain = chain;
}

bool Probe_ASIC::last_chain_is_good() const {
    const auto& all = uploads(m_last_chain);
    if (all.size() < 2) {
        return false;
    }
    const Upload& last = all.back();
    const std::size_t length = m_last_chain == shank_chain ? shank_length : base_length;
    return last.announced == length && last.bytes.size() == length && last == all[all.size() - 2];
}

} // namespace Pelgar::ORBE::test
