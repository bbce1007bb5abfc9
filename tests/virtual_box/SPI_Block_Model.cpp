#include "SPI_Block_Model.h"

#include <utility>

namespace Pelgar::ORBE::test {

namespace {

constexpr std::uint32_t enabled = 1U << 1;
constexpr std::uint32_t master = 1U << 2;
constexpr std::uint32_t manual_slave_select = 1U << 7;
constexpr std::uint32_t inhibited = 1U << 8;
constexpr std::uint32_t runs = enabled | master | manual_slave_select;

constexpr std::uint32_t receive_empty = 1U << 0;
constexpr std::uint32_t receive_full = 1U << 1;
constexpr std::uint32_t transmit_empty = 1U << 2;
constexpr std::uint32_t transmit_full = 1U << 3;

constexpr std::uint32_t flash_line = 1U << 0; // active low

} // namespace

void SPI_Block_Model::write(std::uint32_t address, std::uint32_t value) {
    switch (address) {
    case control:
        m_control = value;
        m_looks = 0;
        shift();
        break;
    case transmit:
        if (m_transmit.size() == fifo_depth) {
            ++m_lost_bytes;
        } else {
            m_transmit.push_back(static_cast<std::uint8_t>(value));
            shift();
        }
        break;
    case slave_select:
        m_selected = (value & flash_line) == 0;
        if (m_selected) {
            m_flash.select();
        } else {
            m_flash.deselect();
        }
        break;
    default:
        break;
    }
}

std::optional<std::uint32_t> SPI_Block_Model::read(std::uint32_t address) {
    switch (address) {
    case status:
        return read_status();
    case receive:
        return read_receive();
    default:
        return std::nullopt;
    }
}

void SPI_Block_Model::reset() {
    m_control = 0;
    m_transmit.clear();
    m_receive.clear();
    m_selected = false;
    m_flash.deselect();
}

void SPI_Block_Model::shift() {
    if ((m_control & (runs | inhibited)) != runs || m_transmit.empty()) {
        return;
    }
    for (const std::uint8_t out : std::exchange(m_transmit, {})) {
        const std::uint8_t in = m_flash.exchange(out);
        if (m_receive.size() == fifo_depth) {
            ++m_lost_bytes;
        } else {
            m_receive.push_back(in);
        }
    }
    m_receive.insert(m_receive.end(), std::exchange(m_extra_bytes, 0), SPI_Flash_Model::idle_line);
}

std::uint32_t SPI_Block_Model::read_status() {
    std::uint32_t value = 0;
    if (m_receive.empty() && !m_receive_sticks) {
        value |= receive_empty;
    }
    if (m_receive.size() >= fifo_depth) {
        value |= receive_full;
    }
    ++m_looks;
    if (m_transmit.empty() && m_empty_at_look && m_looks >= *m_empty_at_look) {
        value |= transmit_empty;
    }
    if (m_transmit.size() == fifo_depth) {
        value |= transmit_full;
    }
    return value;
}

std::uint32_t SPI_Block_Model::read_receive() {
    if (m_receive.empty()) {
        ++m_reads_of_nothing;
        return 0;
    }
    const std::uint8_t byte = m_receive.front();
    m_receive.pop_front();
    return byte;
}

} // namespace Pelgar::ORBE::test
