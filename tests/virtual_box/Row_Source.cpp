#include "Row_Source.h"

#include "numbers/Hash.h"

#include <algorithm>
#include <utility>

namespace Pelgar::ORBE::test {

using namespace recording;

namespace {

constexpr std::size_t reserved_bytes = std::size_t{1} << 16U;

Row_Writer make_writer(const Recording_Options& options) {
    return {Fault_Plan(options.faults, options.seed), reserved_bytes};
}

} // namespace

static_assert(box_port_count == port_count);

Row_Source::Row_Source(Recording_Options options)
    : m_options(std::move(options)), m_writer(make_writer(m_options)) {}

void Row_Source::make_tick(const Stream_Enables& enables) {
    m_writer.clear();
    m_taken = 0;
    std::array<const std::uint16_t*, port_count> words{};
    for (unsigned port = 0; port < port_count; ++port) {
        auto& probe = m_probes[port];
        if (!enables.ports[port]) {
            continue;
        }
        if (!probe || probe->output != enables.outputs[port]) {
            probe.emplace(make_probe(port, enables.outputs[port]));
        }
        words[port] = probe->generator.next().data();
    }
    for (std::size_t row = 0; row < rows_per_super_frame; ++row) {
        for (unsigned port = 0; port < port_count; ++port) {
            if (words[port] != nullptr) {
                m_writer.write(port, words[port] + row * row_words);
            }
        }
    }
    if (enables.rhd_streams) {
        write_rhd_rows(*enables.rhd_streams);
    }
}

Row_Source::Probe Row_Source::make_probe(unsigned port, Probe_Output output) const {
    std::vector<Signal_Choice> signals = m_options.signals;
    if (output != Probe_Output::recording) {
        const bool pattern = output == Probe_Output::test_pattern;
        signals = {{pattern ? Signal_Kind::pattern : Signal_Kind::tone, every_channel()}};
    }
    return {output, Super_Frame_Generator(
                        Channel_Signal(signals, m_options.tone_frequency, port + 1, m_options.seed))};
}

void Row_Source::write_rhd_rows(unsigned streams) {
    if (!m_rhd || m_rhd->streams != streams) {
        m_rhd.emplace(RHD{streams, RHD_Generator(streams, mix(m_options.seed, rhd_stream)), {}});
    }
    auto& words = m_rhd->words;
    const std::size_t pending = words.size();
    m_rhd->generator.append(words);
    m_writer.cut_frame(words, pending);
    std::size_t used = 0;
    for (; used + row_words <= words.size(); used += row_words) {
        m_writer.write(rhd_stream, words.data() + used);
    }
    words.erase(words.begin(), words.begin() + static_cast<std::ptrdiff_t>(used));
}

void Row_Source::restart_probe(std::size_t port) {
    m_probes.at(port).reset();
}

void Row_Source::reset() {
    m_writer = make_writer(m_options);
    m_taken = 0;
    m_probes = {};
    m_rhd.reset();
}

std::span<const std::uint8_t> Row_Source::take(std::size_t wanted) {
    const auto ready = m_writer.bytes().subspan(m_taken);
    const auto taken = ready.first(std::min(wanted, ready.size()));
    m_taken += taken.size();
    return taken;
}

} // namespace Pelgar::ORBE::test
