// Test support, virtual box. A model of the acquisition box as its driver shows it: the register space with
// the design's blocks behind it, four probe ports with a headstage each, and the DMA stream. It outlives the
// connections that are made to it. Any thread.
#pragma once

#include "Box_UART.h"
#include "DMA_Source.h"
#include "Foreign_ICAP_Model.h"
#include "HW_ICAP_Model.h"
#include "Probe_Port.h"
#include "RHD_Interface_Model.h"
#include "SPI_Block_Model.h"

#include <Register_Recorder.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace Pelgar::ORBE::test {

class Virtual_Box {
public:
    // Byte addresses in the register space.
    static constexpr std::uint32_t configuration = 0x0000;
    static constexpr std::uint32_t build_timestamp = 0x0008;
    static constexpr std::uint32_t pll_locks = 0x0200;
    static constexpr std::uint32_t signature = 0x0208;
    static constexpr std::uint32_t uart_receive = 0x0400;
    static constexpr std::uint32_t uart_transmit = 0x0404;
    static constexpr std::uint32_t uart_status = 0x0408;
    static constexpr std::uint32_t foreign_icap_number = 0x0400;
    static constexpr std::uint32_t foreign_icap_value = 0x0404;
    static constexpr std::uint32_t foreign_icap_start = 0x0408;
    static constexpr std::uint32_t foreign_icap_status = 0x040C;
    static constexpr std::uint32_t temperature = 0x0A00;
    static constexpr std::uint32_t hw_icap_fifo = 0x1500;
    static constexpr std::uint32_t hw_icap_control = 0x150C;
    static constexpr std::uint32_t hw_icap_status = 0x1510;
    static constexpr std::uint32_t efuse = 0x1600;

    // The Neuropixels design with four ports, and where it lies in the flash.
    static constexpr std::uint32_t neuropixels_signature = 0x4E50'0040;
    static constexpr std::uint32_t neuropixels_flash_address = 0x00B0'0000;

    // Runs the Neuropixels design; a headstage and a probe on every port. `stream` gives the seed, the
    // signals and the faults of the rows.
    explicit Virtual_Box(recording::Recording_Options stream = {});

    // The same with rows of another source.
    explicit Virtual_Box(std::unique_ptr<A_Row_Source> rows);

    // ---- The driver's side.

    enum class Open_Result : std::uint8_t { opened, no_box, mapping_fails };

    // Takes the next result of those that were queued. Without a connection registers read as all ones,
    // writes are lost, and both are counted.
    Open_Result open();
    void close();
    void write_register(std::uint32_t address, std::uint32_t value);
    std::uint32_t read_register(std::uint32_t address);

    DMA_Source& stream() { return m_stream; }

    // ---- The test's side: what the driver did.

    // Every access through an open connection, in order.
    std::vector<Register_Access> accesses() const { return m_registers.accesses(); }

    std::vector<Register_Access> writes() const { return m_registers.writes(); }

    std::vector<std::uint32_t> writes_to(std::uint32_t address) const {
        return m_registers.writes_to(address);
    }

    void forget_accesses() { m_registers.clear_accesses(); }

    std::uint32_t value(std::uint32_t address) const { return m_registers.value(address); }

    std::size_t opens() const;
    std::size_t accesses_while_closed() const;
    std::size_t unread_uart_bytes() const;
    std::size_t reads_of_empty_uart() const;

    // The flash addresses that the box was booted from, in order.
    std::vector<std::uint32_t> boots() const;

    // ---- The test's side: what the box is like. Ports are indices 0..3.

    Virtual_Headstage& headstage(std::size_t port) { return m_ports.at(port).headstage(); }

    // The port's link shows locked from the n-th look after power-up on (1: at once), or never. While it is
    // not locked there is neither an answer nor a row from the port.
    void lock_at_look(std::size_t port, std::optional<std::size_t> look);

    // A plain register's contents, as the design or the outside world sets them.
    void set_register(std::uint32_t address, std::uint32_t value);

    // The next write of this value to this register throws std::runtime_error("register space lost").
    void fail_write(std::uint32_t address, std::uint32_t value);

    // The design that boots from this flash address. A boot from another one brings back the design that
    // runs.
    void put_design_into_flash(std::uint32_t address, std::uint32_t design_signature);
    void queue_open_results(const std::vector<Open_Result>& results);

    // The foreign configuration port reports done from the n-th poll on, or never.
    void foreign_icap_done_at_read(std::optional<unsigned> read);
    void set_hw_icap_behaviour(HW_ICAP_Model::Behaviour behaviour);
    void let_spi_clock_lock(bool locks);

    // The SPI block and the configuration flash behind it. Not while another thread uses the registers.
    SPI_Block_Model& spi() { return m_spi; }

    SPI_Flash_Model& flash() { return m_spi.flash(); }

private:
    void apply_configuration(std::uint32_t value);
    void update_stream();
    void reboot(std::uint32_t flash_address);
    Probe_Port& uart_port();
    std::uint32_t read_pll_locks();

    // What a register with a block behind it answers; nothing for plain storage.
    std::optional<std::uint32_t> answer_of(std::uint32_t address);

    mutable std::mutex m_mutex;
    Register_Recorder m_registers;
    std::array<Probe_Port, box_port_count> m_ports;
    Box_UART m_uart;
    Foreign_ICAP_Model m_foreign_icap;
    HW_ICAP_Model m_hw_icap;
    RHD_Interface_Model m_rhd;
    SPI_Block_Model m_spi;
    DMA_Source m_stream;
    std::map<std::uint32_t, std::uint32_t> m_designs;
    std::vector<std::uint32_t> m_boots;
    std::deque<Open_Result> m_open_results;
    std::size_t m_opens = 0;
    bool m_open = false;
    std::optional<Register_Access> m_failing_write;
    std::size_t m_accesses_while_closed = 0;
};

} // namespace Pelgar::ORBE::test
