#include "Calibration_Command.h"

#include "Calibration_Generator.h"
#include "Output_File.h"

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
    m_command->add_option("--seed", m_seed, "The same seed gives the same files")->capture_default_str();
    m_command->add_option("--serial", m_serial_number, "The probe's serial number")->capture_default_str();
    m_command->add_flag("--crlf", m_crlf, "End lines with carriage return and line feed");
}

int Calibration_Command::run() const {
    const Calibration_Generator generator(m_seed, m_serial_number, m_crlf ? "\r\n" : "\n");
    const std::filesystem::path folder(m_folder);
    const std::string serial_number = std::to_string(m_serial_number);
    write_file(folder / (serial_number + "_ADCCalibration.csv"), generator.adc_calibration());
    write_file(folder / (serial_number + "_gainCalValues.csv"), generator.gain_calibration());
    return 0;
}

} // namespace Pelgar::ORBE::recording
