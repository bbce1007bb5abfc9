#include "Calibration_Command.h"

#include "Overwriting.h"
#include "command_line/Number_In.h"
#include "generator/Calibration_Generator.h"
#include "generator/Output_File.h"
#include "library_run/Interrupt.h"
#include "terminal/Exit_Codes.h"

#include <cstdio>
#include <filesystem>
#include <span>

namespace Pelgar::ORBE::recording {

namespace {

void write_file(const std::filesystem::path& path, const std::string& text) {
    Output_File file(path);
    file.write(std::span(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
    file.commit();
    std::printf("%s\n", path.string().c_str());
}

} // namespace

Calibration_Command::Calibration_Command(CLI::App& app)
    : m_command(
          app.add_subcommand("calibration", "Write the ADC and gain calibration files of a made-up probe")) {
    m_command
        ->add_option("FOLDER", m_folder,
                     "Where to write SERIAL_ADCCalibration.csv and SERIAL_gainCalValues.csv")
        ->required();
    m_command->add_option("--seed", m_seed, "The same seed gives the same files")
        ->check(tools::whole_in())
        ->capture_default_str();
    m_command->add_option("--serial", m_serial_number, "The probe's serial number")
        ->check(tools::whole_in())
        ->capture_default_str();
    m_command->add_flag("--crlf", m_crlf, "End lines with carriage return and line feed");
    m_command->add_flag("--force", m_force, "Overwrite files that are there already");
    m_command->footer("Exit codes: 0 the files are written, 1 not both, 2 wrong arguments.");
}

int Calibration_Command::run() const {
    const Calibration_Generator generator(m_seed, m_serial_number, m_crlf ? "\r\n" : "\n");
    const std::filesystem::path folder(m_folder);
    const std::string serial_number = std::to_string(m_serial_number);
    const auto adc_file = folder / (serial_number + "_ADCCalibration.csv");
    const auto gain_file = folder / (serial_number + "_gainCalValues.csv");
    if (!m_force && !may_write({adc_file, gain_file})) {
        return tools::exit_codes::failed;
    }
    // Both files or none: whoever stops it now gets both.
    tools::catch_interrupts();
    write_file(adc_file, generator.adc_calibration());
    write_file(gain_file, generator.gain_calibration());
    return tools::exit_codes::done;
}

} // namespace Pelgar::ORBE::recording
