#include "Gain_Model.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdlib>

namespace Pelgar::ORBE::road_model {

namespace {

constexpr std::size_t factor_count = 13;
constexpr std::array<const char*, factor_count> factor_texts{
    "1", "0.98", "1.5", "0.999", "0", "-1.25", "1.02", "64.1", "1e6", "3e9", "nan", "inf", "0.5"};

std::size_t factor_at(Band band, unsigned code, unsigned electrode) {
    return (electrode * 5U + code * 7U + (band == Band::lfp ? 3U : 0U)) % factor_count;
}

float factor(std::size_t at) {
    static const auto factors = [] {
        std::array<float, factor_count> numbers{};
        for (std::size_t i = 0; i < factor_count; ++i) {
            numbers[i] = std::strtof(factor_texts[i], nullptr);
        }
        return numbers;
    }();
    return factors[at];
}

// The product's integer part, of which 16 bits are kept; nothing is left of what 32 bits do not hold.
std::uint16_t product(std::uint16_t value, float by) {
    const float exact = static_cast<float>(value) * by;
    if (!(std::fabs(exact) < 2147483648.0F)) {
        return 0;
    }
    const auto number = static_cast<std::int64_t>(exact);
    return static_cast<std::uint16_t>(number & 0xFFFF);
}

// The same of the distance from 512, held within ten bits.
std::uint16_t product_around_middle(std::uint16_t value, float by) {
    const float exact = static_cast<float>(static_cast<int>(value) - 512) * by;
    if (std::isnan(exact)) {
        return 512;
    }
    if (exact <= -512.0F) {
        return 0;
    }
    if (exact >= 511.0F) {
        return 1023;
    }
    return static_cast<std::uint16_t>(512 + static_cast<int>(exact));
}

} // namespace

std::string Gain_Model::calibration() {
    std::string text = "electrode,factors\n";
    for (unsigned electrode = 0; electrode < 960; ++electrode) {
        text += std::to_string(electrode);
        for (const Band band : {Band::ap, Band::lfp}) {
            for (unsigned code = 0; code < 8; ++code) {
                text += std::string(",") + factor_texts[factor_at(band, code, electrode)];
            }
        }
        text += '\n';
    }
    return text;
}

std::uint16_t Gain_Model::code(Band band, unsigned seed, unsigned channel) {
    const unsigned step = band == Band::ap ? 1 : 3;
    return static_cast<std::uint16_t>((seed + channel / 7 * step) % 8);
}

// Bank 2 ends with electrode 959.
std::uint16_t Gain_Model::bank(unsigned seed, unsigned channel) {
    return static_cast<std::uint16_t>((seed / 8 + channel) % (channel < 192 ? 3 : 2));
}

void Gain_Model::load(unsigned seed) {
    m_is_loaded = true;
    m_seed = seed;
}

void Gain_Model::correct(Band band, Channels& values) const {
    if (!m_is_loaded) {
        return;
    }
    for (unsigned channel = 0; channel < channel_count; ++channel) {
        const unsigned electrode = bank(m_seed, channel) * 384U + channel;
        const float by = factor(factor_at(band, code(band, m_seed, channel), electrode));
        values[channel] =
            m_around_middle ? product_around_middle(values[channel], by) : product(values[channel], by);
    }
}

} // namespace Pelgar::ORBE::road_model
