#include "fpga/SPI_Module.h"

#include "common/Console.h"
#include "fpga/FPGA_Register_Map.h"

#include <algorithm>
#include <stdexcept>
#include <vector>

namespace Pelgar::ORBE {

namespace spi = register_map::spi;

namespace {

constexpr unsigned max_transmit_polls = 50;
constexpr unsigned max_extra_reads = 20;

// What is sent while an answer comes in. The slave does not look at it.
constexpr std::uint8_t filler = 0;

} // namespace

SPI_Module::SPI_Module(I_MemMapped_AXI* axi, std::uint32_t base_address)
    : A_FPGA_Module("SPI_Module", axi, base_address) {}

void SPI_Module::write_command(std::span<const std::uint8_t> command, std::span<const std::uint8_t> data) {
    std::vector<Exchange> exchanges;
    exchanges.reserve(data.size());
    for (const std::uint8_t byte : data) {
        exchanges.push_back({byte, nullptr});
    }
    transact(command, exchanges);
}

void SPI_Module::read_command(std::span<const std::uint8_t> command, std::span<std::uint8_t> answer) {
    std::vector<Exchange> exchanges;
    exchanges.reserve(answer.size());
    for (std::uint8_t& byte : answer) {
        exchanges.push_back({filler, &byte});
    }
    transact(command, exchanges);
}

void SPI_Module::transact(std::span<const std::uint8_t> command, std::span<const Exchange> rest) {
    std::vector<Exchange> first;
    first.reserve(spi::fifo_depth);
    for (const std::uint8_t byte : command) {
        first.push_back({byte, nullptr});
    }
    if (first.size() + rest.size() <= spi::fifo_depth) {
        first.insert(first.end(), rest.begin(), rest.end());
        rest = {};
    }
    write(spi::slave_select, spi::slave_select_flash);
    try {
        exchange(first);
        while (!rest.empty()) {
            const std::size_t count = std::min(rest.size(), spi::fifo_depth);
            exchange(rest.first(count));
            rest = rest.subspan(count);
        }
    } catch (...) {
        // A slave that stays selected would take the next command for more data of this one.
        write(spi::slave_select, spi::slave_select_none);
        throw;
    }
    write(spi::slave_select, spi::slave_select_none);
}

void SPI_Module::exchange(std::span<const Exchange> load) {
    write(spi::control, spi::control_load);
    for (const Exchange& byte : load) {
        write(spi::transmit_data, byte.out);
    }
    write(spi::control, spi::control_transfer);
    wait_for_transmit_fifo();
    for (const Exchange& byte : load) {
        const auto received = static_cast<std::uint8_t>(read(spi::receive_data));
        if (byte.in != nullptr) {
            *byte.in = received;
        }
    }
    drain_receive_fifo();
}

void SPI_Module::wait_for_transmit_fifo() {
    for (unsigned polls = 1; polls <= max_transmit_polls; ++polls) {
        m_largest_transmit_polls = std::max(m_largest_transmit_polls, polls);
        if ((read(spi::status) & spi::status_transmit_fifo_empty) != 0) {
            return;
        }
    }
    throw std::runtime_error("Tx fifo should have been drained");
}

void SPI_Module::drain_receive_fifo() {
    unsigned extra_reads = 0;
    while (extra_reads < max_extra_reads && (read(spi::status) & spi::status_receive_fifo_empty) == 0) {
        read(spi::receive_data);
        ++extra_reads;
    }
    if (extra_reads > 0) {
        console::out("Number of extra reads : ", extra_reads);
    }
    if (extra_reads == max_extra_reads) {
        throw std::runtime_error("Rx fifo should have been drained");
    }
}

} // namespace Pelgar::ORBE
