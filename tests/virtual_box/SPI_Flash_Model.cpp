#include "SPI_Flash_Model.h"

#include <algorithm>
#include <array>

namespace Pelgar::ORBE::test {

namespace {

constexpr std::uint8_t page_program = 0x02;
constexpr std::uint8_t read_data = 0x03;
constexpr std::uint8_t read_status_register = 0x05;
constexpr std::uint8_t write_enable = 0x06;
constexpr std::uint8_t read_flag_status = 0x70;
constexpr std::uint8_t read_identification = 0x9F;
constexpr std::uint8_t bulk_erase = 0xC7;
constexpr std::uint8_t sector_erase = 0xD8;

constexpr std::array<std::uint8_t, 3> identification{0x20, 0xBA, 0x18};
constexpr std::size_t address_end = 4; // command and three bytes of address

constexpr std::uint8_t write_in_progress = 0x01;
constexpr std::uint8_t write_enable_latch = 0x02;
constexpr std::uint8_t controller_ready = 0x80;

} // namespace

void SPI_Flash_Model::select() {
    if (m_selected) {
        return;
    }
    m_selected = true;
    m_refused = false;
    m_bytes = 0;
    m_address = 0;
    m_page.clear();
}

std::uint8_t SPI_Flash_Model::exchange(std::uint8_t in) {
    if (!m_selected) {
        return idle_line;
    }
    const std::size_t position = m_bytes++;
    if (position == 0) {
        m_command = in;
        const bool is_status = in == read_status_register || in == read_flag_status;
        m_refused = m_busy_reads > 0 && !is_status;
        return idle_line;
    }
    if (m_refused) {
        return idle_line;
    }
    if (has_address() && position < address_end) {
        m_address = (m_address << 8U) | in;
        return idle_line;
    }
    if (m_command == page_program) {
        const std::uint32_t offset = m_address + static_cast<std::uint32_t>(position - address_end);
        m_page[(m_address & ~(page_size - 1)) | (offset & (page_size - 1))] = in;
        return idle_line;
    }
    return answer();
}

void SPI_Flash_Model::deselect() {
    if (!m_selected) {
        return;
    }
    m_selected = false;
    if (m_bytes == 0) {
        return;
    }
    const bool taken = !m_refused && is_complete() && carry_out();
    if (m_command != read_status_register && m_command != read_flag_status) {
        const std::size_t ahead = has_address() ? address_end : 1;
        m_transactions.push_back({m_command, m_address, m_bytes - std::min(m_bytes, ahead), !taken});
    }
}

bool SPI_Flash_Model::has_address() const {
    return m_command == page_program || m_command == read_data || m_command == sector_erase;
}

// What changes something must be of the exact length; a page needs a byte at least.
bool SPI_Flash_Model::is_complete() const {
    switch (m_command) {
    case write_enable:
    case bulk_erase:
        return m_bytes == 1;
    case sector_erase:
        return m_bytes == address_end;
    case page_program:
    case read_data:
        return m_bytes > address_end;
    default:
        return true;
    }
}

std::uint8_t SPI_Flash_Model::answer() {
    switch (m_command) {
    case read_identification: {
        const std::size_t index = m_bytes - 2;
        return index < identification.size() ? identification[index] : 0;
    }
    case read_status_register:
        return read_status();
    case read_flag_status:
        return m_busy_reads > 0 ? 0 : controller_ready;
    case read_data:
        return byte_at(m_address + static_cast<std::uint32_t>(m_bytes - 1 - address_end));
    default:
        return idle_line;
    }
}

std::uint8_t SPI_Flash_Model::read_status() {
    ++m_status_reads;
    const auto latch = static_cast<std::uint8_t>(m_write_enabled ? write_enable_latch : 0);
    if (m_busy_reads == 0) {
        return latch;
    }
    if (!m_busy_sticks) {
        --m_busy_reads;
    }
    return static_cast<std::uint8_t>(latch | write_in_progress);
}

bool SPI_Flash_Model::carry_out() {
    switch (m_command) {
    case read_identification:
    case read_status_register:
    case read_flag_status:
    case read_data:
        return true;
    case write_enable:
        m_write_enabled = true;
        return true;
    case page_program:
    case sector_erase:
    case bulk_erase:
        break;
    default:
        return false;
    }
    if (!m_write_enabled) {
        return false;
    }
    m_write_enabled = false;
    if (m_command == page_program) {
        program_page();
        m_busy_reads = m_page_busy_reads;
        return true;
    }
    if (m_command == sector_erase) {
        m_sectors.erase(m_address / sector_size);
    } else {
        m_sectors.clear();
    }
    m_busy_reads = m_erase_busy_reads;
    return true;
}

void SPI_Flash_Model::program_page() {
    Sector& sector = sector_of(m_address);
    for (const auto& [address, value] : m_page) {
        std::uint8_t& cell = sector[address % sector_size];
        cell = static_cast<std::uint8_t>(cell & value); // bits only ever go from 1 to 0
    }
}

SPI_Flash_Model::Sector& SPI_Flash_Model::sector_of(std::uint32_t address) {
    return m_sectors.try_emplace(address % size / sector_size, sector_size, erased).first->second;
}

std::uint8_t SPI_Flash_Model::byte_at(std::uint32_t address) const {
    address %= size;
    const auto sector = m_sectors.find(address / sector_size);
    return sector == m_sectors.end() ? erased : sector->second[address % sector_size];
}

std::vector<std::uint8_t> SPI_Flash_Model::bytes(std::uint32_t address, std::size_t count) const {
    std::vector<std::uint8_t> result(count, erased);
    for (std::size_t done = 0; done < count;) {
        const std::uint32_t offset = address % sector_size;
        const auto part = std::min<std::size_t>(count - done, sector_size - offset);
        if (const auto sector = m_sectors.find(address % size / sector_size); sector != m_sectors.end()) {
            std::copy_n(&sector->second[offset], part, &result[done]);
        }
        done += part;
        address += static_cast<std::uint32_t>(part);
    }
    return result;
}

void SPI_Flash_Model::put(std::uint32_t address, const std::vector<std::uint8_t>& bytes) {
    for (std::size_t done = 0; done < bytes.size();) {
        const std::uint32_t offset = address % sector_size;
        const auto part = std::min<std::size_t>(bytes.size() - done, sector_size - offset);
        std::copy_n(&bytes[done], part, &sector_of(address)[offset]);
        done += part;
        address += static_cast<std::uint32_t>(part);
    }
}

void SPI_Flash_Model::set_busy_reads(unsigned erase, unsigned page) {
    m_erase_busy_reads = erase;
    m_page_busy_reads = page;
}

} // namespace Pelgar::ORBE::test
