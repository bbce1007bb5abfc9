#include "decoding/Raw_Decoder.h"

#include "host_streams/Prompt_Delivery.h"
#include "probe/CP_L1_Whole_Super_Frames.h"
#include "wire/Mux_Row_Format.h"

#include <algorithm>
#include <chrono>
#include <stdexcept>
#include <string>

namespace Pelgar::ORBE::recorder {

namespace {

// By gain code, of both bands.
constexpr std::array<int, 8> gains{50, 125, 250, 500, 1000, 1500, 2000, 3000};

// A packet is twelve super frames of 65 rows; an RHD frame without data streams has 20 words, and a row
// seven.
constexpr std::size_t packet_rows = std::size_t{12} * 65;
constexpr std::size_t adc_packet_rows = 2;
constexpr std::size_t piece_rows = Raw_Decoder::piece_bytes / demux::mux_row::length;
constexpr std::size_t enough_probe_rows = Raw_Decoder::probe_queue_length / 2 * packet_rows - piece_rows;
constexpr std::size_t enough_rhd_rows = Raw_Decoder::adc_queue_length / 2 * adc_packet_rows - piece_rows;

static_assert(Raw_Decoder::piece_bytes % npoe_adapter::prompt_transfer_bytes == 0);

// The only time of streaming that there is.
constexpr std::uint32_t streaming = 1;

std::uint16_t gain_code(int gain) {
    const auto place = std::find(gains.begin(), gains.end(), gain);
    if (place == gains.end()) {
        throw std::runtime_error("no probe has a gain of " + std::to_string(gain));
    }
    return static_cast<std::uint16_t>(place - gains.begin());
}

// The nearest of the ranges that the inputs know decides nothing but where the comparators switch.
Neuropixels::ADCrange_t range_of(double volts) {
    if (volts <= 2.5) {
        return Neuropixels::ADC_RANGE_2_5V;
    }
    return volts <= 5.0 ? Neuropixels::ADC_RANGE_5V : Neuropixels::ADC_RANGE_10V;
}

} // namespace

Raw_Decoder::Raw_Decoder(const Recording_Description& description,
                         const std::vector<std::optional<std::filesystem::path>>& gain_files)
    : m_adc_stream(std::make_shared<npoe_adapter::ADC_Stream>(m_adc_inputs, m_sync_source, m_sync_levels)),
      m_unwanted(std::make_shared<demux::CP_L2_CH_Results_Null_Writer>()) {
    for (auto& worker : m_workers) {
        worker = std::make_unique<demux::C_NP_Worker_Thread>();
        worker->set_l2_listener(m_unwanted);
    }
    for (std::size_t probe = 0; probe < description.probes.size(); ++probe) {
        connect_probe(description.probes[probe], gain_files.at(probe));
    }
    if (description.adc) {
        m_adc_inputs.set_range(range_of(description.adc->range_volts));
    }
    m_adc_stream->begin_streaming(streaming);
    m_adc_stream->begin_run();
    m_rhd_worker.set_listener(m_adc_stream);
    m_rhd_worker.set_enabled_stream_count(0);
    m_splitter = std::make_unique<demux::Row_Splitter>(m_workers, m_rhd_worker);
    m_splitter->set_block_length(npoe_adapter::prompt_block_super_frames);
    for (std::size_t port = 0; port < m_workers.size(); ++port) {
        m_workers[port]->start("NP" + std::to_string(port));
        m_workers[port]->resync();
    }
    m_rhd_worker.start("RHD");
}

void Raw_Decoder::connect_probe(const Probe_Description& probe,
                                const std::optional<std::filesystem::path>& gain_file) {
    auto stream = std::make_shared<npoe_adapter::Electrode_Stream>(
        probe.port, m_sync_source, m_sync_levels, std::chrono::nanoseconds(0), probe_queue_length);
    auto filter = std::make_shared<C_L2_CH_Gain_Fix_Filter>();
    filter->correct_around_middle();
    if (gain_file && !filter->load_gain_calibration(gain_file->string().c_str())) {
        throw std::runtime_error("'" + gain_file->string() + "' is no gain calibration");
    }
    apply_settings(*filter, probe);
    filter->set_listener(stream);
    auto& worker = *m_workers.at(static_cast<std::size_t>(probe.port) - 1);
    worker.replace_l1_stage(std::make_unique<demux::CP_L1_Whole_Super_Frames>(stream));
    worker.set_l2_listener(filter);
    stream->begin_streaming(streaming);
    stream->begin_run();
    m_filters.push_back(std::move(filter));
    m_streams.push_back(std::move(stream));
}

void Raw_Decoder::apply_settings(C_L2_CH_Gain_Fix_Filter& filter, const Probe_Description& probe) {
    for (std::size_t channel = 0; channel < channel_count; ++channel) {
        const Channel_Description& settings = probe.channels[channel];
        const auto number = static_cast<std::uint32_t>(channel);
        filter.set_channel_gain_codes(number, gain_code(settings.ap_gain), gain_code(settings.lfp_gain));
        if (settings.electrode >= 0) {
            filter.set_channel_bank(
                number,
                static_cast<std::uint16_t>(static_cast<std::size_t>(settings.electrode) / channel_count));
        }
    }
}

// A row without its marker costs the rest of its transfer.
void Raw_Decoder::decode(std::span<const std::uint8_t> rows) {
    while (!rows.empty()) {
        const auto size = std::min<std::size_t>(rows.size(), npoe_adapter::prompt_transfer_bytes);
        m_splitter->split(rows.data(), size / demux::mux_row::length);
        rows = rows.subspan(size);
    }
}

std::array<std::uint32_t, demux::np_port_count + 1> Raw_Decoder::row_counts() const {
    std::array<std::uint32_t, demux::np_port_count + 1> counts{};
    for (unsigned port = 0; port < demux::np_port_count; ++port) {
        counts[port] = m_splitter->np_rows(port);
    }
    counts.back() = m_splitter->rhd_rows();
    return counts;
}

bool Raw_Decoder::is_enough() const {
    const auto counts = row_counts();
    for (std::size_t stream = 0; stream < counts.size(); ++stream) {
        const std::uint32_t rows = counts[stream] - m_rows_before[stream];
        if (rows >= (stream < demux::np_port_count ? enough_probe_rows : enough_rhd_rows)) {
            return true;
        }
    }
    return false;
}

void Raw_Decoder::wait() {
    m_rows_before = row_counts();
    for (const auto& worker : m_workers) {
        worker->wait_until_decoded();
    }
    m_rhd_worker.wait_until_delivered();
}

} // namespace Pelgar::ORBE::recorder
