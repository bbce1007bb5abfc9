#include "Flash_Command.h"

#include "Opened_Box.h"
#include "command_line/Number_In.h"
#include "command_line/Question.h"
#include "flash/Configuration_Flash.h"
#include "flash/SPI_Flash_Programmer.h"
#include "fpga/FPGA_Register_Map.h"
#include "library_run/Interrupt.h"
#include "terminal/Exit_Codes.h"
#include "terminal/Progress_Bar.h"
#include "terminal/Text_Format.h"

#include <cstdio>
#include <fstream>
#include <limits>
#include <optional>
#include <stdexcept>
#include <system_error>

namespace Pelgar::ORBE::tools {

namespace {

namespace flash = configuration_flash;

// The library writes whole pieces of this many bytes.
constexpr std::uint64_t piece_size = register_map::spi::fifo_depth;
constexpr const char* padded_name = "padded.bin";

constexpr const char* footer =
    "ADDRESS is a byte address in the flash, a multiple of 0x10000, and may be written in hexadecimal "
    "(0xb00000). "
    "Whole sectors of 64 KiB are erased; what else lay in them is lost. The last sector, with the hardware "
    "record, is "
    "out of reach (see hwinfo). Writing cannot be stopped half-way: Ctrl-C is ignored until it is done.\n\n"
    "Exit codes: 0 written, 1 not written or only partly, 2 wrong arguments or a file that cannot be written "
    "there.";

// Copies the file into the working directory, with the erased flash's own value up to a whole piece: the
// library leaves out what does not fill one.
std::filesystem::path padded_copy(const std::filesystem::path& file, std::uint64_t size) {
    const std::uint64_t padding = piece_size - size % piece_size;
    std::ofstream copy(padded_name, std::ios::binary);
    copy << std::ifstream(file, std::ios::binary).rdbuf() << std::string(padding, '\xFF');
    copy.close();
    if (!copy || std::filesystem::file_size(padded_name) != size + padding) {
        throw std::runtime_error("the file cannot be copied");
    }
    return padded_name;
}

} // namespace

Flash_Command::Flash_Command(CLI::App& app)
    : m_command(app.add_subcommand("flash", "Write a file into the box's configuration flash")) {
    m_command->add_option("FILE", m_path, "The FPGA design")->required();
    m_command->add_option("ADDRESS", m_address, "Where it shall begin in the flash")
        ->required()
        ->check(whole_in(0, std::numeric_limits<std::uint32_t>::max()));
    m_command->add_flag("--yes", m_yes, "Do not ask");
    m_command->footer(footer);
}

void Flash_Command::check_arguments() {
    m_file = std::filesystem::absolute(m_path);
    std::error_code error;
    const auto status = std::filesystem::status(m_file, error);
    if (!std::filesystem::exists(status)) {
        throw std::invalid_argument("cannot read '" + m_path + "': " + error.message());
    }
    if (!std::filesystem::is_regular_file(status)) {
        throw std::invalid_argument("'" + m_path + "' is no file");
    }
    m_size = std::filesystem::file_size(m_file);
    if (m_size == 0) {
        throw std::invalid_argument("'" + m_path + "' is empty");
    }
    if (m_address % flash::sector_size != 0) {
        throw std::invalid_argument("ADDRESS is not the beginning of a sector (a multiple of 0x10000)");
    }
    if (m_address >= flash::hw_info_address || m_size > flash::hw_info_address - m_address) {
        throw std::invalid_argument("'" + m_path + "' does not fit between ADDRESS and the hardware record");
    }
}

int Flash_Command::run(const Bench& bench) const {
    Opened_Box box(bench);
    const std::uint64_t sectors = SPI_Flash_Programmer::sector_count(m_size);
    const std::string question = text_of("Erase %s of 64 KiB from 0x%06x on and write %s?\n"
                                         "A box whose design is damaged does not start any more.",
                                         counted(sectors, "sector", "sectors").c_str(), m_address,
                                         counted(m_size, "byte", "bytes").c_str());
    if (!m_yes && !user_agrees(question, bench.environment.answers)) {
        std::puts("Nothing was written.");
        return exit_codes::failed;
    }
    catch_interrupts();
    const std::filesystem::path file = m_size % piece_size == 0 ? m_file : padded_copy(m_file, m_size);
    const bool written = bench.run.quietly_with_user([&](const Quiet_Library& user) {
        std::optional<Progress_Bar> bar;
        return box.controller().program_flash(
            file.string().c_str(), m_address, [&](const Flash_Progress& progress) {
                if (!bar) {
                    bar.emplace("Flash", progress.total, user.user_error_descriptor());
                }
                bar->show(progress.done, progress.step);
            });
    });
    if (!written) {
        throw std::runtime_error("the flash was not written: " + bench.run.take_error());
    }
    std::printf("%s written at 0x%06x.\n", counted(m_size, "byte", "bytes").c_str(), m_address);
    return exit_codes::done;
}

} // namespace Pelgar::ORBE::tools
