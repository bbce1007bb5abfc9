// Test support, virtual box. The configuration flash: 16 MiB in sectors of 64 KiB and pages of 256 bytes,
// driven byte by byte while it is selected; what changes it takes effect when it is deselected. Guarded by
// the register space that owns it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

namespace Pelgar::ORBE::test {

class SPI_Flash_Model {
public:
    static constexpr std::uint32_t size = 0x100'0000;
    static constexpr std::uint32_t sector_size = 0x1'0000;
    static constexpr std::uint32_t page_size = 0x100;
    static constexpr std::uint8_t erased = 0xFF;
    // What the lines read when nobody drives them.
    static constexpr std::uint8_t idle_line = 0xFF;

    // What a transaction asked for. `bytes` counts those behind command and address.
    struct Transaction {
        std::uint8_t command;
        std::uint32_t address;
        std::size_t bytes;
        bool ignored; // the flash was busy, writing was not enabled, or the command was cut off or unknown

        bool operator==(const Transaction&) const = default;
    };

    // ---- The side of the lines.

    void select();
    // One byte in, one byte out.
    std::uint8_t exchange(std::uint8_t in);
    void deselect();

    // ---- The test's side.

    std::uint8_t byte_at(std::uint32_t address) const;
    std::vector<std::uint8_t> bytes(std::uint32_t address, std::size_t count) const;
    void put(std::uint32_t address, const std::vector<std::uint8_t>& bytes);

    // The transactions but those that read the status, in order.
    const std::vector<Transaction>& transactions() const { return m_transactions; }

    void forget_transactions() { m_transactions.clear(); }

    std::size_t status_reads() const { return m_status_reads; }

    bool is_write_enabled() const { return m_write_enabled; }

    // An erase shows as busy in that many reads of the status, a page in that many.
    void set_busy_reads(unsigned erase, unsigned page);

    // Once busy, busy for ever.
    void let_busy_stick() { m_busy_sticks = true; }

    // Busy from now on for that many reads of the status.
    void make_busy(unsigned reads) { m_busy_reads = reads; }

private:
    using Sector = std::vector<std::uint8_t>;

    bool has_address() const;
    bool is_complete() const;
    std::uint8_t answer();
    std::uint8_t read_status();
    // Returns whether the flash took the command.
    bool carry_out();
    void program_page();
    Sector& sector_of(std::uint32_t address);

    // A sector that is not here is erased.
    std::map<std::uint32_t, Sector> m_sectors;

    // The transaction under way.
    bool m_selected = false;
    bool m_refused = false;
    std::size_t m_bytes = 0;
    std::uint8_t m_command = 0;
    std::uint32_t m_address = 0;
    // Of a page longer than it is, the last byte for each place counts.
    std::map<std::uint32_t, std::uint8_t> m_page;

    bool m_write_enabled = false;
    unsigned m_busy_reads = 0;
    bool m_busy_sticks = false;
    unsigned m_erase_busy_reads = 3;
    unsigned m_page_busy_reads = 2;
    std::size_t m_status_reads = 0;
    std::vector<Transaction> m_transactions;
};

} // namespace Pelgar::ORBE::test
