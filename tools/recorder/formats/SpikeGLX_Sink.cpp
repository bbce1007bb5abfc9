#include "formats/SpikeGLX_Sink.h"

#include "description/Whole_File.h"
#include "formats/Flush_Size.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace Pelgar::ORBE::recorder {

SpikeGLX_Sink::SpikeGLX_Sink(SpikeGLX_Stream stream, std::shared_ptr<const Recording_Description> description)
    : m_stream(std::move(stream)), m_description(std::move(description)),
      m_channels(saved_channels(*m_description)), m_file(m_stream.data_path) {
    write_file(m_stream.meta_path, spikeglx_metadata(m_stream, *m_description, 0));
}

void SpikeGLX_Sink::append(const Sample_Rows& rows) {
    const std::size_t columns = m_stream.column_count;
    auto* place = reinterpret_cast<std::int16_t*>(m_file.append(rows.count * columns * sizeof(std::int16_t)));
    for (std::size_t row = 0; row < rows.count; ++row, place += columns) {
        const std::int16_t* const values = rows.values + row * rows.row_length;
        if (m_stream.kind == SpikeGLX_Stream::Kind::adc) {
            fill_adc_row(values, place);
        } else {
            fill_probe_row(values, place);
        }
        place[columns - 1] = static_cast<std::int16_t>(rows.status[row]);
    }
    m_last_status = rows.status[rows.count - 1];
    if (m_file.buffered() >= flush_size(columns, m_stream.sample_rate)) {
        m_file.flush();
    }
}

void SpikeGLX_Sink::fill_probe_row(const std::int16_t* values, std::int16_t* place) const {
    if (m_channels.size() == channel_count) {
        std::memcpy(place, values, channel_count * sizeof(*place));
        return;
    }
    for (std::size_t i = 0; i < m_channels.size(); ++i) {
        place[i] = values[m_channels[i]];
    }
}

// The comparators are the bits of one word.
void SpikeGLX_Sink::fill_adc_row(const std::int16_t* values, std::int16_t* place) const {
    const std::size_t inputs = m_stream.column_count - 2;
    std::memcpy(place, values, inputs * sizeof(*place));
    unsigned word = 0;
    for (std::size_t comparator = 0; comparator < adc_input_count; ++comparator) {
        word |= (values[adc_input_count + comparator] != 0 ? 1U : 0U) << comparator;
    }
    place[inputs] = static_cast<std::int16_t>(word);
}

// For a second the sync input is taken to stay as it was, so that a short gap looks like no edge.
void SpikeGLX_Sink::skip(std::uint64_t count) {
    const std::size_t columns = m_stream.column_count;
    const std::uint64_t row_bytes = columns * sizeof(std::int16_t);
    std::uint64_t held = 0;
    if (m_last_status != 0) {
        held = std::min<std::uint64_t>(count, static_cast<std::uint64_t>(m_stream.sample_rate));
        auto* place =
            reinterpret_cast<std::int16_t*>(m_file.append(static_cast<std::size_t>(held * row_bytes)));
        for (std::uint64_t row = 0; row < held; ++row, place += columns) {
            std::fill_n(place, columns - 1, std::int16_t{0});
            place[columns - 1] = static_cast<std::int16_t>(m_last_status);
        }
    }
    m_file.append_zeros((count - held) * row_bytes);
}

void SpikeGLX_Sink::finish() {
    m_file.close();
    write_file(m_stream.meta_path, spikeglx_metadata(m_stream, *m_description, m_file.size()));
}

} // namespace Pelgar::ORBE::recorder
