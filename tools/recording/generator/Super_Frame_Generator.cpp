#include "generator/Super_Frame_Generator.h"

#include "stream_format/Channel_Map.h"

#include <utility>

namespace Pelgar::ORBE::recording {

namespace {

using Words = std::array<std::uint16_t, words_per_super_frame>;

// What is the same in every super frame: the tag of each lane, and the flag on the very first word.
constexpr Words make_frame_of_tags() {
    Words words{};
    for (std::size_t i = 0; i < words.size(); ++i) {
        words[i] = static_cast<std::uint16_t>((i % row_words + 1) << lane_tag_shift);
    }
    words[0] |= super_frame_flag;
    return words;
}

// For each channel the word that carries its AP sample: frames 1 to 12 are the slots 0 to 11.
constexpr std::array<std::uint16_t, channel_count> make_ap_places() {
    std::array<std::uint16_t, channel_count> places{};
    for (std::size_t slot = 0; slot < slots_per_sample; ++slot) {
        for (std::size_t adc = 0; adc < adc_count; ++adc) {
            places[channel_of(adc, slot)] =
                static_cast<std::uint16_t>((slot + 1) * words_per_frame + word_of_value(adc));
        }
    }
    return places;
}

constexpr Words frame_of_tags = make_frame_of_tags();
constexpr std::array<std::uint16_t, channel_count> ap_places = make_ap_places();

} // namespace

Super_Frame_Generator::Super_Frame_Generator(Channel_Signal signal) : m_signal(std::move(signal)) {}

const Words& Super_Frame_Generator::next() {
    m_words = frame_of_tags;

    m_signal.fill(Band::ap, m_super_frame, m_ap);
    for (std::size_t channel = 0; channel < channel_count; ++channel) {
        m_words[ap_places[channel]] |= m_ap[channel];
    }

    // Frame 0 carries a twelfth of an LFP sample, so twelve super frames share one sample.
    const std::size_t slot = m_super_frame % slots_per_sample;
    if (slot == 0) {
        m_signal.fill(Band::lfp, m_super_frame / slots_per_sample, m_lfp);
    }
    for (std::size_t adc = 0; adc < adc_count; ++adc) {
        m_words[word_of_value(adc)] |= m_lfp[channel_of(adc, slot)];
    }

    for (std::size_t frame = 0; frame < frames_per_super_frame; ++frame) {
        const std::uint64_t counter = m_super_frame * frames_per_super_frame + frame;
        std::uint16_t* const words = m_words.data() + frame * words_per_frame;
        words[word_of_value(counter_high_index)] |=
            static_cast<std::uint16_t>((counter >> counter_half_bits) & sample_mask);
        words[word_of_value(counter_low_index)] |= static_cast<std::uint16_t>(counter & sample_mask);
    }
    ++m_super_frame;
    return m_words;
}

} // namespace Pelgar::ORBE::recording
