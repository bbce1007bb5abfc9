// Layer: device controller. Erases, writes and reads the configuration flash over the SPI module. `Box_Flash`
// makes one for each call, on the host's thread; polls, and waits in steps of 1000 ms where it
// says so. Progress and failures are printed.
#pragma once

#include "flash/Flash_Progress.h"

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <span>
#include <string>

namespace Pelgar::ORBE {

class SPI_Module;

class SPI_Flash_Programmer {
public:
    // `spi` must outlive the programmer.
    explicit SPI_Flash_Programmer(SPI_Module* spi) : m_spi(spi) {}

    // Erases the sectors that the file takes, from byte `address` on, and writes the file's whole pieces of
    // 16 bytes; what is left over at the file's end is not written. The rest of the last sector stays erased.
    // An address that is not the beginning of a sector is taken as it is: the flash erases the sector around
    // it, and wraps inside a page.
    // An image that runs into or over the hardware record is programmed like any other. False when the file
    // cannot be opened or the flash does not answer as it should, and, before anything is erased, when the
    // file would run past the end of the flash. An empty file has no sectors and succeeds everywhere.
    bool program_flash(const char* path, std::uint32_t address, const Flash_Progress_Listener& listener = {});

    // Erases the sector at `address` and writes at most 256 bytes into its first page. False when the flash
    // does not answer as it should.
    bool rewrite_sector(std::uint32_t address, std::span<const std::uint8_t> page);

    // Erases the whole flash, the hardware record with it.
    bool erase_flash();

    // Puts `size` bytes from `address` on into the buffer, in place of what it held; nothing on failure.
    bool read_flash(std::uint32_t address, std::uint32_t size, std::string* buffer);

    // Polls, when `slow` every 1000 ms, until no erasing or writing is going on any more. Throws
    // std::runtime_error("Flash erase/program timeout") after 480 polls.
    void wait_flash_to_become_ready(bool slow);

    // The number of sectors for a file of that size. Computed in single precision, which counts every byte
    // up to 16 MiB, the size of the flash, and rounds above.
    static std::uint64_t sector_count(std::uint64_t bytes);

private:
    struct Pace;

    // Called with the number of sectors or pages that are done.
    using Count_Listener = std::function<void(std::uint64_t count)>;

    void erase_sectors(std::uint32_t address, std::uint64_t count, const Count_Listener& erased);
    void program_file(std::istream& file, std::uint32_t address, std::uint64_t pages,
                      const Count_Listener& written);
    void program_page(std::uint32_t address, std::span<const std::uint8_t> data);

    // Returns the number of polls it took, or, with the flash still busy, one more than there are.
    unsigned poll_until_ready(const Pace& pace);
    // Without a line for each page.
    void wait_quietly();

    std::uint8_t read_register(std::uint8_t command);
    void send(std::uint8_t command);
    void send(std::uint8_t command, std::uint32_t address, std::span<const std::uint8_t> data = {});
    void identify_once();

    SPI_Module* m_spi;
    bool m_first_command_sent = false;
};

} // namespace Pelgar::ORBE
