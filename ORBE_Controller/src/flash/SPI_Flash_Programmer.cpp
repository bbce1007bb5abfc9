#include "flash/SPI_Flash_Programmer.h"

#include "common/Console.h"
#include "common/Host_Path.h"
#include "common/Waiting.h"
#include "flash/Configuration_Flash.h"
#include "fpga/FPGA_Register_Map.h"
#include "fpga/SPI_Module.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <exception>
#include <fstream>
#include <stdexcept>
#include <utility>

namespace Pelgar::ORBE {

namespace flash = configuration_flash;

// How the status is polled while the flash is busy.
struct SPI_Flash_Programmer::Pace {
    unsigned polls_without_pause;
    std::chrono::milliseconds pause;
    const char* mark; // printed at every poll
};

namespace {

using namespace std::chrono_literals;

constexpr unsigned max_ready_polls = 480;
// A page takes a few hundred microseconds, at most some milliseconds; a poll a few microseconds.
constexpr unsigned page_polls_without_pause = 100;

constexpr std::uint64_t piece_size = register_map::spi::fifo_depth;
constexpr std::uint64_t bytes_per_kib = 1024;
constexpr std::uint64_t pages_per_sector = flash::sector_size / flash::page_size;

std::array<std::uint8_t, 4> with_address(std::uint8_t command, std::uint32_t address) {
    return {command, static_cast<std::uint8_t>(address >> flash::address_high_shift),
            static_cast<std::uint8_t>(address >> flash::address_middle_shift),
            static_cast<std::uint8_t>(address)};
}

// Closed, with a message, when there is no such file. Reading it throws when the file system fails.
std::ifstream open_image(const char* path) {
    std::ifstream file;
    if (path != nullptr && !opens_as_directory(path)) {
        file.open(path, std::ios::binary);
    }
    if (file.is_open()) {
        file.exceptions(std::ios::badbit);
    } else {
        console::err("Dosya acilamaldi\n");
        console::err("File coundn't be opened\n");
    }
    return file;
}

// Throws for what has no end to be measured at, such as a pipe.
std::uint64_t size_of(std::istream& file) {
    file.seekg(0, std::ios::end);
    const std::streamoff size = file.tellg();
    if (size < 0) {
        throw std::runtime_error("file has no size");
    }
    return static_cast<std::uint64_t>(size);
}

// Behind the last address the flash would count on from its beginning, where the design lies that the box
// starts with.
void check_place(std::uint32_t address, std::uint64_t size) {
    const bool fits = address <= flash::size && size <= flash::size - address;
    if (!fits && size != 0) {
        throw std::runtime_error("file does not fit into the flash");
    }
}

// Does what a command of that name takes and answers its result; an exception is printed and fails it.
template <typename Operation>
bool carry_out(const char* name, Operation operation) {
    try {
        return operation();
    } catch (const std::exception& exception) {
        console::out("Exception catched during ", name, " command : ", exception.what(), "\n");
        return false;
    }
}

// How many pages can begin from there on in steps of a page.
std::uint64_t pages_behind(std::uint32_t address) {
    return address < flash::size ? (flash::size - address - 1) / flash::page_size + 1 : 0;
}

} // namespace

bool SPI_Flash_Programmer::program_flash(const char* path, std::uint32_t address,
                                         const Flash_Progress_Listener& listener) {
    return carry_out("program_flash", [&] {
        std::ifstream file = open_image(path);
        if (!file.is_open()) {
            return false;
        }
        const std::uint64_t size = size_of(file);
        // Erasing takes minutes; the file is not held open meanwhile.
        file.close();
        console::out("File size : ", size / bytes_per_kib, " KB\n");
        check_place(address, size);
        const std::uint64_t sectors = sector_count(size);
        const auto report = [&](const char* step, std::uint64_t done) {
            if (listener) {
                listener({step, done, 2 * sectors * flash::sector_size});
            }
        };
        erase_sectors(address, sectors,
                      [&](std::uint64_t erased) { report("erasing", erased * flash::sector_size); });
        file = open_image(path);
        if (!file.is_open()) {
            return false;
        }
        console::out("Programming flash..\n");
        // Also a file that has grown since it was measured stays inside the flash.
        const std::uint64_t pages = std::min(sectors * pages_per_sector, pages_behind(address));
        program_file(file, address, pages, [&](std::uint64_t written) {
            const std::uint64_t done = written == pages ? sectors * pages_per_sector : written;
            report("writing", sectors * flash::sector_size + done * flash::page_size);
        });
        console::out("Program flash completed\n");
        return true;
    });
}

bool SPI_Flash_Programmer::rewrite_sector(std::uint32_t address, std::span<const std::uint8_t> page) {
    return carry_out("program_flash", [&] {
        erase_sectors(address, 1, [](std::uint64_t /*erased*/) {});
        console::out("Programming flash..\n");
        program_page(address, page);
        console::out("Program flash completed\n");
        return true;
    });
}

bool SPI_Flash_Programmer::erase_flash() {
    return carry_out("erase_flash", [&] {
        console::out("Ereasing flash (Bulk Erase) this will take some minutes\n");
        wait_flash_to_become_ready(false);
        send(flash::command_write_enable);
        send(flash::command_bulk_erase);
        wait_flash_to_become_ready(true);
        console::out("Erase flash completed\n");
        return true;
    });
}

bool SPI_Flash_Programmer::read_flash(std::uint32_t address, std::uint32_t size, std::string* buffer) {
    buffer->clear();
    return carry_out("read_flash", [&] {
        console::out("Reading flash..\n");
        // A busy flash ignores the command and answers anything.
        wait_quietly();
        std::string contents(size, '\0');
        m_spi->read_command(with_address(flash::command_read, address),
                            {reinterpret_cast<std::uint8_t*>(contents.data()), contents.size()});
        *buffer = std::move(contents);
        console::out("Reading flash completed\n");
        return true;
    });
}

void SPI_Flash_Programmer::wait_flash_to_become_ready(bool slow) {
    static constexpr Pace every_second{0, 1000ms, "."};
    static constexpr Pace at_once{max_ready_polls, 0ms, "."};
    const unsigned polls = poll_until_ready(slow ? every_second : at_once);
    console::out("wait_flash_to_become_ready counter : ", std::min(polls, max_ready_polls));
    if (polls > max_ready_polls) {
        throw std::runtime_error("Flash erase/program timeout");
    }
    console::out("flash_flag_status_register : ", read_register(flash::command_read_flag_status));
}

std::uint64_t SPI_Flash_Programmer::sector_count(std::uint64_t bytes) {
    constexpr float sectors_per_byte = 1.0F / static_cast<float>(flash::sector_size);
    return static_cast<std::uint64_t>(std::ceil(static_cast<float>(bytes) * sectors_per_byte));
}

void SPI_Flash_Programmer::erase_sectors(std::uint32_t address, std::uint64_t count,
                                         const Count_Listener& erased) {
    console::out("Ereasing flash (Sector Erase)\n");
    wait_flash_to_become_ready(false);
    for (std::uint64_t i = 0; i < count; ++i) {
        console::out("Ereasing sector adr ", address, "\n");
        send(flash::command_write_enable);
        send(flash::command_sector_erase, address);
        wait_flash_to_become_ready(true);
        address += flash::sector_size;
        erased(i + 1);
    }
}

void SPI_Flash_Programmer::program_file(std::istream& file, std::uint32_t address, std::uint64_t pages,
                                        const Count_Listener& written) {
    for (std::uint64_t i = 0; i < pages; ++i) {
        std::array<std::uint8_t, flash::page_size> page{};
        file.read(reinterpret_cast<char*>(page.data()), page.size());
        const auto count = static_cast<std::uint64_t>(file.gcount());
        const std::uint64_t whole_pieces = count - count % piece_size;
        // A page that not one piece is left for is not begun: the flash would be left open to writing.
        if (whole_pieces > 0) {
            program_page(address, std::span(page).first(static_cast<std::size_t>(whole_pieces)));
        }
        if (count < page.size()) {
            console::err("End of stream reached during program\n");
            // What is left of the sectors stays erased.
            written(pages);
            return;
        }
        address += flash::page_size;
        written(i + 1);
    }
}

void SPI_Flash_Programmer::program_page(std::uint32_t address, std::span<const std::uint8_t> data) {
    send(flash::command_write_enable);
    send(flash::command_page_program, address, data);
    // The page is written from now on, since the slave is deselected; the next one would be ignored.
    wait_quietly();
}

unsigned SPI_Flash_Programmer::poll_until_ready(const Pace& pace) {
    for (unsigned polls = 1; polls <= max_ready_polls; ++polls) {
        const std::uint8_t status = read_register(flash::command_read_status);
        console::out(pace.mark);
        if ((status & flash::status_write_in_progress) == 0) {
            return polls;
        }
        if (polls > pace.polls_without_pause && polls < max_ready_polls) {
            wait_for(pace.pause);
        }
    }
    return max_ready_polls + 1;
}

void SPI_Flash_Programmer::wait_quietly() {
    static constexpr Pace page_by_page{page_polls_without_pause, 1ms, ""};
    if (poll_until_ready(page_by_page) > max_ready_polls) {
        throw std::runtime_error("Flash erase/program timeout");
    }
}

std::uint8_t SPI_Flash_Programmer::read_register(std::uint8_t command) {
    identify_once();
    std::uint8_t value = 0;
    m_spi->read_command(std::span(&command, 1), std::span(&value, 1));
    return value;
}

void SPI_Flash_Programmer::send(std::uint8_t command) {
    identify_once();
    m_spi->write_command(std::span(&command, 1));
}

void SPI_Flash_Programmer::send(std::uint8_t command, std::uint32_t address,
                                std::span<const std::uint8_t> data) {
    identify_once();
    m_spi->write_command(with_address(command, address), data);
}

// Right after the FPGA has loaded its design the first transaction does not reach the flash as it should;
// this one is there to be lost.
void SPI_Flash_Programmer::identify_once() {
    if (m_first_command_sent) {
        return;
    }
    m_first_command_sent = true;
    std::array<std::uint8_t, flash::identification_bytes> discarded{};
    m_spi->read_command(std::span(&flash::command_read_identification, 1), discarded);
}

} // namespace Pelgar::ORBE
