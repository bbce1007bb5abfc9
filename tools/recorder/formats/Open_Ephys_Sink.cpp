#include "formats/Open_Ephys_Sink.h"

#include "formats/Flush_Size.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace Pelgar::ORBE::recorder {

namespace {

// Samples whose numbers are kept in memory at once when a gap is filled.
constexpr std::uint64_t numbers_at_once = 65'536;

// Channels of a probe that are saved; none for the ADC inputs, whose first ones are.
std::vector<int> picked_channels(const Open_Ephys_Structure& structure, const Open_Ephys_Stream& stream) {
    return stream.kind == Open_Ephys_Stream::Kind::adc ? std::vector<int>()
                                                       : saved_channels(structure.description());
}

} // namespace

Open_Ephys_Sink::Open_Ephys_Sink(std::shared_ptr<Open_Ephys_Structure> structure, std::size_t stream)
    : m_structure(std::move(structure)), m_index(stream), m_stream(m_structure->streams().at(stream)),
      m_channels(picked_channels(*m_structure, m_stream)),
      m_samples(m_stream.continuous_folder / "continuous.dat"),
      m_sample_numbers(m_stream.continuous_folder / "sample_numbers.npy", "<i8"),
      m_times(m_stream.continuous_folder / "timestamps.npy", "<f8"),
      m_event_states(m_stream.events_folder / "states.npy", "<i2"),
      m_event_sample_numbers(m_stream.events_folder / "sample_numbers.npy", "<i8"),
      m_event_times(m_stream.events_folder / "timestamps.npy", "<f8"),
      m_event_words(m_stream.events_folder / "full_words.npy", "<u8") {}

void Open_Ephys_Sink::append(const Sample_Rows& rows) {
    const std::size_t columns = m_stream.channel_count;
    auto* place =
        reinterpret_cast<std::int16_t*>(m_samples.append(rows.count * columns * sizeof(std::int16_t)));
    if (columns == rows.row_length) {
        std::memcpy(place, rows.values, rows.count * columns * sizeof(*place));
    } else {
        for (std::size_t row = 0; row < rows.count; ++row, place += columns) {
            const std::int16_t* const values = rows.values + row * rows.row_length;
            if (m_channels.empty()) {
                std::memcpy(place, values, columns * sizeof(*place));
            }
            for (std::size_t i = 0; i < m_channels.size(); ++i) {
                place[i] = values[m_channels[i]];
            }
        }
    }
    follow_lines(rows);
    number_samples(rows.count);
    if (m_samples.buffered() >= flush_size(columns, m_stream.sample_rate)) {
        flush();
    }
}

void Open_Ephys_Sink::follow_lines(const Sample_Rows& rows) {
    if (!m_stream.has_events()) {
        return;
    }
    for (std::size_t row = 0; row < rows.count; ++row) {
        const std::uint32_t lines = lines_of(rows, row);
        if (lines != m_lines) {
            add_events(lines, m_count + row);
        }
    }
}

std::uint32_t Open_Ephys_Sink::lines_of(const Sample_Rows& rows, std::size_t row) const {
    std::uint32_t lines = (rows.status[row] & sync_status) != 0 ? 1 : 0;
    if (m_stream.kind == Open_Ephys_Stream::Kind::adc) {
        const std::int16_t* const comparators = rows.values + row * rows.row_length + adc_input_count;
        for (std::size_t comparator = 0; comparator < adc_input_count; ++comparator) {
            lines |= (comparators[comparator] != 0 ? 2U : 0U) << comparator;
        }
    }
    return lines;
}

// An event is the number of the line, counted from 1, negative where the line becomes low.
void Open_Ephys_Sink::add_events(std::uint32_t lines, std::uint64_t place) {
    for (unsigned line = 0; line <= adc_input_count; ++line) {
        const std::uint32_t bit = 1U << line;
        if (((lines ^ m_lines) & bit) == 0) {
            continue;
        }
        m_lines ^= bit;
        const int state = static_cast<int>(line) + 1;
        m_event_states.append(static_cast<std::int16_t>((lines & bit) != 0 ? state : -state));
        m_event_sample_numbers.append(static_cast<std::int64_t>(sample_number(place)));
        m_event_times.append(time_of(place));
        m_event_words.append(static_cast<std::uint64_t>(m_lines));
    }
}

double Open_Ephys_Sink::time_of(std::uint64_t place) const {
    return static_cast<double>(sample_number(place)) / m_stream.sample_rate;
}

void Open_Ephys_Sink::number_samples(std::size_t count) {
    m_sample_numbers.append_many<std::int64_t>(
        count, [this](std::size_t i) { return static_cast<std::int64_t>(sample_number(m_count + i)); });
    m_times.append_many<double>(count, [this](std::size_t i) { return time_of(m_count + i); });
    m_count += count;
}

// Readers take the n-th sample for that of time n / rate and look at no other number than the first.
void Open_Ephys_Sink::skip(std::uint64_t count) {
    m_samples.append_zeros(count * m_stream.channel_count * sizeof(std::int16_t));
    while (count > 0) {
        const auto now = static_cast<std::size_t>(std::min(count, numbers_at_once));
        number_samples(now);
        count -= now;
        if (count > 0) {
            m_sample_numbers.flush();
            m_times.flush();
        }
    }
}

// The samples first: what is told about them is true at any moment.
void Open_Ephys_Sink::flush() {
    m_samples.flush();
    m_sample_numbers.flush();
    m_times.flush();
    const bool has_events = m_event_states.count() > 0;
    if (has_events) {
        for (Npy_File* const file :
             {&m_event_sample_numbers, &m_event_times, &m_event_words, &m_event_states}) {
            file->flush();
        }
    }
    m_structure->tell(m_index, {m_count > 0, has_events});
}

void Open_Ephys_Sink::finish() {
    if (m_count == 0) {
        return;
    }
    flush();
    m_samples.close();
    m_sample_numbers.close();
    m_times.close();
    if (m_event_states.count() > 0) {
        for (Npy_File* const file :
             {&m_event_sample_numbers, &m_event_times, &m_event_words, &m_event_states}) {
            file->close();
        }
    }
}

std::uint64_t Open_Ephys_Sink::bytes() const {
    std::uint64_t bytes = m_samples.size();
    for (const Npy_File* const file : {&m_sample_numbers, &m_times, &m_event_states, &m_event_sample_numbers,
                                       &m_event_times, &m_event_words}) {
        bytes += file->size();
    }
    return bytes;
}

} // namespace Pelgar::ORBE::recorder
