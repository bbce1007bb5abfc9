#include "generator/Recording_Generator.h"

#include "generator/Fault_Check.h"
#include "generator/Recording_Size.h"
#include "numbers/Hash.h"

#include <algorithm>
#include <stdexcept>

namespace Pelgar::ORBE::recording {

namespace {

constexpr std::size_t part_bytes = 4 * piece_bytes;

std::uint64_t round_up(std::uint64_t value, std::uint64_t step) {
    return (value + step - 1) / step * step;
}

const Recording_Options& checked(const Recording_Options& options) {
    for (std::size_t i = 0; i < options.ports.size(); ++i) {
        if (options.ports[i] < 1 || options.ports[i] > port_count ||
            (i > 0 && options.ports[i] <= options.ports[i - 1])) {
            throw std::invalid_argument("ports must be numbers from 1 to 4, each once, in ascending order");
        }
    }
    if (options.rhd_streams > rhd_max_streams) {
        throw std::invalid_argument("the RHD interface has at most 32 streams");
    }
    if (options.ports.empty() && (options.blocks != 0 || !options.rhd)) {
        throw std::invalid_argument("a recording without ports needs RHD frames and a length in seconds");
    }
    check_faults(options);
    return options;
}

} // namespace

Recording_Generator::Recording_Generator(const Recording_Options& options)
    : m_options(checked(options)),
      m_writer(Fault_Plan(options.faults, options.seed), part_bytes + piece_bytes),
      m_rhd(options.rhd_streams, mix(options.seed, rhd_stream)) {
    for (const unsigned port : m_options.ports) {
        m_probes.emplace_back(
            Channel_Signal(m_options.signals, m_options.tone_frequency, port, m_options.seed));
    }
}

std::span<const std::uint8_t> Recording_Generator::next() {
    m_bytes_before += m_writer.bytes().size();
    m_writer.clear();
    if (m_finished) {
        return {};
    }
    // The end is looked for after every tick, since it may lie where the part is full.
    while (!finished() && m_writer.bytes().size() < part_bytes) {
        generate_tick();
    }
    if (finished()) {
        finish();
    }
    return m_writer.bytes();
}

std::uint64_t Recording_Generator::expected_bytes() const {
    return size_of(m_options).bytes;
}

void Recording_Generator::generate_tick() {
    if (m_options.blocks != 0 && m_tick == m_options.blocks * super_frames_per_block) {
        // A block leaves the demultiplexer when the row after it comes, and each port's first row is next.
        const std::uint64_t written = m_bytes_before + m_writer.bytes().size();
        m_byte_limit = round_up(written + row_bytes * m_options.ports.size(), piece_bytes);
    }
    std::array<const std::uint16_t*, port_count> words{};
    for (std::size_t i = 0; i < m_probes.size(); ++i) {
        words[i] = m_probes[i].next().data();
    }
    for (std::size_t row = 0; row < rows_per_super_frame; ++row) {
        for (std::size_t i = 0; i < m_probes.size(); ++i) {
            m_writer.write(m_options.ports[i] - 1, words[i] + row * row_words);
        }
    }
    if (m_options.rhd) {
        write_rhd_rows();
    }
    ++m_tick;
}

void Recording_Generator::write_rhd_rows() {
    const std::size_t pending = m_rhd_words.size();
    m_rhd.append(m_rhd_words);
    m_writer.cut_frame(m_rhd_words, pending);
    std::size_t used = 0;
    for (; used + row_words <= m_rhd_words.size(); used += row_words) {
        m_writer.write(rhd_stream, m_rhd_words.data() + used);
    }
    m_rhd_words.erase(m_rhd_words.begin(), m_rhd_words.begin() + static_cast<std::ptrdiff_t>(used));
}

bool Recording_Generator::finished() const {
    if (m_options.blocks != 0) {
        return m_byte_limit != 0 && m_bytes_before + m_writer.bytes().size() >= m_byte_limit;
    }
    return m_tick >= m_options.super_frames;
}

void Recording_Generator::finish() {
    if (m_options.blocks != 0) {
        m_writer.resize(static_cast<std::size_t>(m_byte_limit - m_bytes_before));
    }
    m_writer.resize(m_writer.bytes().size() + static_cast<std::size_t>(m_options.extra_bytes));
    m_finished = true;
}

std::vector<std::uint8_t> make_recording(const Recording_Options& options) {
    Recording_Generator generator(options);
    std::vector<std::uint8_t> recording;
    recording.reserve(static_cast<std::size_t>(generator.expected_bytes()));
    for (auto part = generator.next(); !part.empty(); part = generator.next()) {
        recording.insert(recording.end(), part.begin(), part.end());
    }
    return recording;
}

} // namespace Pelgar::ORBE::recording
