#include "folders/Stream_Feed.h"

#include <algorithm>
#include <span>
#include <utility>

namespace Pelgar::ORBE::view {

namespace {

constexpr std::uint64_t rows_at_once = 1024;
// Four times what a writer keeps back.
constexpr std::uint64_t rows_in_doubt = recorder::adc_sample_rate;

} // namespace

Stream_Feed::Stream_Feed(Folder_Stream stream)
    : m_stream(std::move(stream)), m_file(m_stream.data, m_stream.row_length) {
    if (m_stream.lines) {
        m_lines.emplace(*m_stream.lines);
    }
}

// The edges last: they are written behind the samples.
bool Stream_Feed::look() {
    const bool has_grown = m_file.look();
    if (m_lines) {
        m_lines->look();
    }
    return has_grown;
}

// Of samples that were there before the last growth the edges are there too, and of what is long ago.
std::uint64_t Stream_Feed::rows(bool is_settled) const {
    const std::uint64_t rows = m_file.rows();
    return m_lines && !is_settled ? std::max(m_file.rows_before(), rows - std::min(rows, rows_in_doubt))
                                  : rows;
}

void Stream_Feed::show(std::uint64_t end, const Gap_List& gaps, Histories& histories) {
    while (m_next < end) {
        const Gap_List::Stretch stretch = gaps.stretch_at(m_next);
        const std::uint64_t stretch_end = std::min(stretch.end, end);
        if (stretch.is_lost) {
            lose(stretch_end - m_next, histories);
            m_next = stretch_end;
        } else {
            show_rows(stretch_end, histories);
        }
    }
}

void Stream_Feed::lose(std::uint64_t count, Histories& histories) const {
    if (m_stream.kind == Folder_Stream::Kind::adc) {
        histories.adc()->append_lost(m_next, count);
    } else {
        histories.probe(m_stream.probe).append_lost(band(), m_next, count);
    }
}

void Stream_Feed::show_rows(std::uint64_t end, Histories& histories) {
    while (m_next < end) {
        const auto count = static_cast<std::size_t>(std::min(end - m_next, rows_at_once));
        m_values.resize(count * m_stream.row_length);
        m_file.read(m_next, m_values);
        if (m_stream.kind == Folder_Stream::Kind::adc) {
            show_adc_rows(count, *histories.adc());
        } else {
            show_probe_rows(count, histories.probe(m_stream.probe));
        }
        m_next += count;
    }
}

void Stream_Feed::show_probe_rows(std::size_t count, Probe_History& history) {
    m_probe_rows.assign(count * recorder::channel_count, 0);
    for (std::size_t row = 0; row < count; ++row) {
        const std::int16_t* const values = m_values.data() + row * m_stream.row_length;
        std::int16_t* const channels = m_probe_rows.data() + row * recorder::channel_count;
        if (m_stream.channels.size() == recorder::channel_count) {
            std::copy_n(values, recorder::channel_count, channels);
        } else {
            for (std::size_t column = 0; column < m_stream.channels.size(); ++column) {
                channels[m_stream.channels[column]] = values[column];
            }
        }
    }
    history.append(band(), m_next, m_probe_rows);
}

void Stream_Feed::show_adc_rows(std::size_t count, ADC_History& history) {
    m_words.resize(count);
    if (m_lines) {
        m_lines->read(m_stream.first_sample + m_next, m_words);
    }
    m_adc_rows.assign(count, {});
    const std::size_t inputs = std::min(m_stream.input_count, ADC_History::analog_inputs);
    for (std::size_t i = 0; i < count; ++i) {
        const std::int16_t* const values = m_values.data() + i * m_stream.row_length;
        // The lowest line of the edges is the sync input.
        const std::uint64_t comparators =
            m_lines ? m_words[i] >> 1U : static_cast<std::uint16_t>(values[m_stream.input_count]);
        ADC_History::Row& row = m_adc_rows[i];
        row.number = m_next + i;
        std::copy_n(values, inputs, row.values);
        for (std::size_t line = 0; line < ADC_History::ttl_inputs; ++line) {
            row.values[ADC_History::analog_inputs + line] =
                static_cast<std::int16_t>(comparators >> (ADC_History::first_ttl_comparator + line) & 1U);
        }
    }
    history.append(m_adc_rows);
}

} // namespace Pelgar::ORBE::view
