#include "Hardware_Info_Command.h"

#include "Opened_Box.h"
#include "command_line/Question.h"
#include "flash/ORBE_HW_Info.h"
#include "library_run/Interrupt.h"
#include "terminal/Exit_Codes.h"

#include <cctype>
#include <charconv>
#include <cstdio>
#include <memory>
#include <stdexcept>

namespace Pelgar::ORBE::tools {

namespace {

constexpr std::size_t bytes_per_line = 16;

// Throws std::invalid_argument unless `text` is the whole record, two hexadecimal digits a byte.
ORBE_HW_Info parse_record(const std::string& text) {
    ORBE_HW_Info info;
    bool good = text.size() == 2 * ORBE_HW_Info::size;
    for (std::size_t i = 0; good && i < ORBE_HW_Info::size; ++i) {
        const char* const digits = text.data() + 2 * i;
        const auto [end, error] = std::from_chars(digits, digits + 2, info.bytes[i], 16);
        good = error == std::errc{} && end == digits + 2;
    }
    if (!good) {
        throw std::invalid_argument("the record is 32 bytes: 64 hexadecimal digits");
    }
    return info;
}

void print_record(const ORBE_HW_Info& info) {
    for (std::size_t line = 0; line < ORBE_HW_Info::size; line += bytes_per_line) {
        std::printf("%02zx ", line);
        std::string characters;
        for (std::size_t i = line; i < line + bytes_per_line; ++i) {
            const unsigned char byte = info.bytes[i];
            std::printf(" %02x", byte);
            characters += std::isprint(byte) != 0 ? static_cast<char>(byte) : '.';
        }
        std::printf("  %s\n", characters.c_str());
    }
}

std::unique_ptr<ORBE_HW_Info> read(Opened_Box& box, const Bench& bench) {
    auto info =
        box.quietly([](ORBE_Controller_Library& controller) { return controller.read_ORBE_HW_info(); });
    if (!info) {
        throw std::runtime_error("the flash cannot be read: " + bench.run.take_error());
    }
    return info;
}

} // namespace

Hardware_Info_Command::Hardware_Info_Command(CLI::App& app)
    : m_command(app.add_subcommand("hwinfo", "Show the hardware record in the box's configuration flash")) {
    m_command->add_option("--write", m_text, "Write this record: 64 hexadecimal digits");
    m_command->add_flag("--yes", m_yes, "Do not ask before writing");
    m_command->footer("Exit codes: 0 shown or written, 1 not so, 2 wrong arguments.");
}

void Hardware_Info_Command::check_arguments() {
    if (m_text) {
        m_record = parse_record(*m_text);
    }
}

int Hardware_Info_Command::run(const Bench& bench) const {
    if (m_text) {
        return write(bench);
    }
    Opened_Box box(bench);
    print_record(*read(box, bench));
    return exit_codes::done;
}

int Hardware_Info_Command::write(const Bench& bench) const {
    Opened_Box box(bench);
    std::puts("The record now:");
    print_record(*read(box, bench));
    if (!m_yes && !user_agrees("Write the new record over it?", bench.environment.answers)) {
        std::puts("Nothing was written.");
        return exit_codes::failed;
    }
    // The sector is erased before it is written: whoever stops it in between has lost the record.
    catch_interrupts();
    const bool written = box.quietly(
        [&](ORBE_Controller_Library& controller) { return controller.program_ORBE_HW_info(m_record); });
    if (!written) {
        throw std::runtime_error("the record was not written: " + bench.run.take_error());
    }
    if (*read(box, bench) != m_record) {
        throw std::runtime_error("the flash does not hold the record that was written");
    }
    std::puts("The record is written.");
    return exit_codes::done;
}

} // namespace Pelgar::ORBE::tools
