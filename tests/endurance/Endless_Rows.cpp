#include "Endless_Rows.h"

#include "Numbered_Samples.h"

#include "generator/Super_Frame_Generator.h"
#include "stream_format/Channel_Map.h"

#include <algorithm>
#include <cstring>

namespace Pelgar::ORBE::test {

namespace {

using namespace recording;

// The channel of the sample that `fault_at` damages is that of this ADC in the second slot.
constexpr std::size_t damaged_adc = 9;
constexpr std::size_t damaged_frame = 2;

// Where a word of a super frame lies when the rows of several ports take turns.
class Places {
public:
    Places(std::uint8_t* first_row, std::size_t ports) : m_first_row(first_row), m_step(ports * row_bytes) {}

    std::uint8_t* row(std::size_t index) const { return m_first_row + index * m_step; }

    // Sets the value's bits that are not set yet.
    void add(std::size_t frame, std::size_t value_index, std::uint64_t value) const {
        change(frame, value_index, [value](std::uint16_t word) { return word | (value & sample_mask); });
    }

    template <typename Replace>
    void change(std::size_t frame, std::size_t value_index, Replace replacement) const {
        const std::size_t word = word_of_value(value_index);
        std::uint8_t* const place = row(frame * rows_per_frame + word / row_words) + row_header_bytes +
                                    word % row_words * sizeof(std::uint16_t);
        std::uint16_t value = 0;
        std::memcpy(&value, place, sizeof value);
        value = static_cast<std::uint16_t>(replacement(value));
        std::memcpy(place, &value, sizeof value);
    }

private:
    std::uint8_t* m_first_row;
    std::size_t m_step;
};

std::uint16_t without_value(std::uint16_t word) {
    return static_cast<std::uint16_t>(word & ~unsigned{sample_mask});
}

} // namespace

Endless_Rows::Endless_Rows(const Endless_Options& options)
    : m_options(options), m_inputs(options.seed),
      m_bytes(port_count * sizeof(Super_Frame) + (rhd_frame_words(0) / row_words + 1) * row_bytes) {}

void Endless_Rows::make_super_frames(unsigned port) {
    Super_Frame_Generator generator(Channel_Signal({}, 0.0, port + 1, m_options.seed));
    auto& made = m_super_frames[port];
    made.resize(Numbered_Samples::period);
    for (std::size_t sample = 0; sample < made.size(); ++sample) {
        const auto& words = generator.next();
        const Places places(made[sample].data(), 1);
        for (std::size_t row = 0; row < rows_per_super_frame; ++row) {
            places.row(row)[0] = static_cast<std::uint8_t>(row_marker | port);
            std::memcpy(places.row(row) + row_header_bytes, words.data() + row * row_words,
                        row_payload_bytes);
        }
        for (std::size_t frame = 0; frame < frames_per_super_frame; ++frame) {
            places.change(frame, counter_high_index, without_value);
            places.change(frame, counter_low_index, without_value);
        }
        for (std::size_t adc = 0; adc < Numbered_Samples::number_channels.size(); ++adc) {
            places.change(1, adc, without_value);
            if (sample % slots_per_sample == 0) {
                places.change(0, adc, without_value);
            }
        }
    }
}

void Endless_Rows::make_tick(const Stream_Enables& enables) {
    m_size = 0;
    m_taken = 0;
    const auto ports = static_cast<std::size_t>(std::count(enables.ports.begin(), enables.ports.end(), true));
    std::size_t rank = 0;
    for (unsigned port = 0; port < port_count; ++port) {
        if (enables.ports[port]) {
            write_super_frame(port, rank++, ports);
        }
    }
    m_size = ports * sizeof(Super_Frame);
    if (enables.rhd_streams) {
        write_rhd_rows();
    }
}

void Endless_Rows::write_super_frame(unsigned port, std::size_t rank, std::size_t ports) {
    if (m_super_frames[port].empty()) {
        make_super_frames(port);
    }
    const std::uint64_t tick = m_ticks[port]++;
    const std::uint64_t number = m_options.numbers.of_port(tick);
    const std::uint8_t* from = m_super_frames[port][number % Numbered_Samples::period].data();
    const Places places(m_bytes.data() + rank * row_bytes, ports);
    std::uint8_t row_counter = m_row_counters[port];
    for (std::size_t row = 0; row < rows_per_super_frame; ++row, from += row_bytes) {
        std::uint8_t* const place = places.row(row);
        std::memcpy(place, from, row_bytes);
        place[1] = row_counter++;
    }
    m_row_counters[port] = row_counter;

    for (std::size_t frame = 0; frame < frames_per_super_frame; ++frame) {
        const std::uint64_t counter = number * frames_per_super_frame + frame;
        places.add(frame, counter_high_index, counter >> counter_half_bits);
        places.add(frame, counter_low_index, counter);
    }
    for (std::size_t adc = 0; adc < Numbered_Samples::number_channels.size(); ++adc) {
        places.add(1, adc, Numbered_Samples::digit(number, adc));
        if (number % slots_per_sample == 0) {
            places.add(0, adc, Numbered_Samples::digit(number / slots_per_sample, adc));
        }
    }
    if (rank == 0 && tick == m_options.fault_at) {
        places.change(damaged_frame, damaged_adc, [](std::uint16_t word) { return word ^ 1U; });
    }
}

void Endless_Rows::write_rhd_rows() {
    const std::uint64_t frame = m_options.numbers.of_adc(m_rhd_tick++);
    auto& words = m_rhd_words;
    const auto add_wide = [&words](std::uint32_t value) {
        words.push_back(static_cast<std::uint16_t>(value));
        words.push_back(static_cast<std::uint16_t>(value >> 16U));
    };
    for (std::size_t i = 0; i < rhd_magic_words; ++i) {
        words.push_back(rhd_magic_word(i));
    }
    add_wide(static_cast<std::uint32_t>(m_options.first_stamp + frame));
    words.insert(words.end(), rhd_unused_words, 0);
    for (std::size_t input = 0; input < rhd_adc_inputs; ++input) {
        words.push_back(m_inputs.word(frame, input));
    }
    add_wide(Numbered_Inputs::ttl(frame));
    add_wide(0);

    std::size_t used = 0;
    for (; used + row_words <= words.size(); used += row_words) {
        std::uint8_t* const row = m_bytes.data() + m_size;
        row[0] = static_cast<std::uint8_t>(row_marker | rhd_stream);
        row[1] = m_row_counters[rhd_stream]++;
        std::memcpy(row + row_header_bytes, words.data() + used, row_payload_bytes);
        m_size += row_bytes;
    }
    words.erase(words.begin(), words.begin() + static_cast<std::ptrdiff_t>(used));
}

void Endless_Rows::reset() {
    m_ticks = {};
    m_rhd_tick = 0;
    m_row_counters = {};
    m_rhd_words.clear();
    m_size = 0;
    m_taken = 0;
}

std::span<const std::uint8_t> Endless_Rows::take(std::size_t wanted) {
    const std::size_t taken = std::min(wanted, m_size - m_taken);
    const std::span<const std::uint8_t> bytes(m_bytes.data() + m_taken, taken);
    m_taken += taken;
    return bytes;
}

} // namespace Pelgar::ORBE::test
