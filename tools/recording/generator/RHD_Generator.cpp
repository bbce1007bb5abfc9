#include "generator/RHD_Generator.h"

#include "numbers/Hash.h"

#include <cmath>
#include <numbers>

namespace Pelgar::ORBE::recording {

namespace {

constexpr double adc_middle = 32768.0;
constexpr double adc_tone_amplitude = 24000.0;

void append_wide(std::vector<std::uint16_t>& words, std::uint32_t value) {
    words.push_back(static_cast<std::uint16_t>(value));
    words.push_back(static_cast<std::uint16_t>(value >> 16));
}

} // namespace

RHD_Generator::RHD_Generator(unsigned streams, std::uint64_t seed) : m_streams(streams), m_seed(seed) {}

std::uint16_t RHD_Generator::adc_input(std::uint64_t frame, std::size_t input) const {
    const std::uint64_t random = mix(m_seed, input);
    if (input % 2 == 0) {
        const std::uint64_t step = 1 + random % 64;
        return static_cast<std::uint16_t>(random + frame * step);
    }
    const std::uint64_t turned = frame * (random >> 8);
    const double tone = std::sin(2.0 * std::numbers::pi * unit_interval(turned));
    return static_cast<std::uint16_t>(std::lround(adc_middle + adc_tone_amplitude * tone));
}

std::uint32_t RHD_Generator::ttl_inputs(std::uint64_t frame) const {
    const std::uint64_t hold = frame / ttl_hold_frames;
    if (hold == 0) {
        return 0;
    }
    // Half of the holds keep what was there, so that changes come at uneven times. The box has sixteen
    // inputs.
    std::uint64_t changed = hold;
    while (changed > 1 && mix(m_seed + 1, changed) % 2 == 0) {
        --changed;
    }
    return static_cast<std::uint32_t>(mix(m_seed + 2, changed) & 0xFFFF);
}

void RHD_Generator::append(std::vector<std::uint16_t>& words) {
    for (std::size_t i = 0; i < rhd_magic_words; ++i) {
        words.push_back(rhd_magic_word(i));
    }
    append_wide(words, static_cast<std::uint32_t>(m_frame));

    const std::uint64_t frame_seed = mix(m_seed + 3, m_frame);
    for (std::size_t i = 0; i < rhd_words_per_stream * m_streams; ++i) {
        words.push_back(static_cast<std::uint16_t>(mix(frame_seed + i)));
    }
    words.insert(words.end(), rhd_filler_words(m_streams) + rhd_unused_words, 0);

    for (std::size_t input = 0; input < rhd_adc_inputs; ++input) {
        words.push_back(adc_input(m_frame, input));
    }
    append_wide(words, ttl_inputs(m_frame));
    append_wide(words, 0);
    ++m_frame;
}

} // namespace Pelgar::ORBE::recording
