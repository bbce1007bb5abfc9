#include "generator/Calibration_Generator.h"

#include "numbers/Hash.h"

#include <array>
#include <cstdio>
#include <utility>

namespace Pelgar::ORBE::recording {

namespace {

constexpr unsigned adc_count = 32;
constexpr unsigned electrode_count = 960;
constexpr unsigned factors_per_electrode = 16;

// How many values CompP, CompN, slope, coarse, fine, cfix, offset and threshold can take.
constexpr std::array<std::uint64_t, 8> adc_field_ranges{32, 32, 8, 4, 4, 16, 1024, 1024};

// Apart from any position of the ADC calibration.
constexpr std::uint64_t first_gain_position = 1U << 20U;

} // namespace

Calibration_Generator::Calibration_Generator(std::uint64_t seed, std::uint64_t serial_number,
                                             std::string line_end)
    : m_seed(seed), m_serial_number(serial_number), m_line_end(std::move(line_end)) {}

std::uint64_t Calibration_Generator::below(std::uint64_t limit, std::uint64_t position) const {
    return mix(m_seed, position) % limit;
}

std::string Calibration_Generator::adc_calibration() const {
    std::string text = std::to_string(m_serial_number) + m_line_end;
    std::uint64_t position = 0;
    for (unsigned adc = 0; adc < adc_count; ++adc) {
        text += std::to_string(adc);
        for (const std::uint64_t range : adc_field_ranges) {
            text += ',' + std::to_string(below(range, position++));
        }
        text += m_line_end;
    }
    return text;
}

std::string Calibration_Generator::gain_calibration() const {
    std::string text = std::to_string(m_serial_number) + m_line_end;
    std::uint64_t position = first_gain_position;
    for (unsigned electrode = 0; electrode < electrode_count; ++electrode) {
        text += std::to_string(electrode);
        for (unsigned k = 0; k < factors_per_electrode; ++k) {
            // In ten-thousandths, so that no locale has a say in the decimal point.
            const std::uint64_t factor = 9000 + below(2001, position++);
            std::array<char, 16> field{};
            std::snprintf(field.data(), field.size(), ",%u.%04u", static_cast<unsigned>(factor / 10000),
                          static_cast<unsigned>(factor % 10000));
            text += field.data();
        }
        text += m_line_end;
    }
    return text;
}

} // namespace Pelgar::ORBE::recording
