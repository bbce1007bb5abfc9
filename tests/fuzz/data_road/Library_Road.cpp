#include "Library_Road.h"

#include "Demux_Test_Peer.h"
#include "Gain_Model.h"
#include "Require.h"

#include "host_streams/ADC_Inputs.h"
#include "host_streams/ADC_Stream.h"
#include "host_streams/Sync_Levels.h"
#include "host_streams/Sync_Source.h"

#include <algorithm>
#include <chrono>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <string>

namespace Pelgar::ORBE::test {

namespace {

using demux::Demux_Test_Peer;
using demux::Main_mux_transfer_buffer_wrapper;
using road_model::Band;
using road_model::Gain_Model;
using road_model::Listening;

// A filter of a port, and the seed by which its channels are set.
struct Filter {
    std::shared_ptr<C_L2_CH_Gain_Fix_Filter> filter = std::make_shared<C_L2_CH_Gain_Fix_Filter>();
    std::optional<unsigned> seed;
};

struct Kept {
    // By way, whether a calibration is loaded, and port.
    std::array<std::array<std::array<Filter, 4>, 2>, 2> filters;

    npoe_adapter::ADC_Inputs adc_inputs;
    npoe_adapter::Sync_Source sync_source;
    npoe_adapter::Sync_Levels sync_levels;
    std::shared_ptr<npoe_adapter::ADC_Stream> adc_stream =
        std::make_shared<npoe_adapter::ADC_Stream>(adc_inputs, sync_source, sync_levels);

    std::unique_ptr<Main_mux_transfer_buffer_wrapper> transfer =
        std::make_unique<Main_mux_transfer_buffer_wrapper>();

    Kept() {
        constexpr const char* calibration = "gain_calibration.csv";
        std::ofstream(calibration, std::ios::binary) << Gain_Model::calibration();
        for (std::size_t way = 0; way < filters.size(); ++way) {
            for (std::size_t port = 0; port < 4; ++port) {
                require(filters[way][1][port].filter->load_gain_calibration(calibration),
                        "the calibration is loaded");
                for (auto& loaded : filters[way]) {
                    if (way == 1) {
                        loaded[port].filter->correct_around_middle();
                    }
                }
            }
        }
    }
};

Kept& kept() {
    static Kept things;
    return things;
}

Filter& filter_of(const road_model::Road_Settings& settings, unsigned port) {
    return kept().filters[settings.host_mode ? 1 : 0][settings.gain_loaded ? 1 : 0][port];
}

void set_channels(Filter& filter, unsigned seed) {
    if (filter.seed == seed) {
        return;
    }
    filter.seed = seed;
    for (unsigned channel = 0; channel < road_model::channel_count; ++channel) {
        filter.filter->set_channel_gain_codes(channel, Gain_Model::code(Band::ap, seed, channel),
                                              Gain_Model::code(Band::lfp, seed, channel));
        filter.filter->set_channel_bank(channel, Gain_Model::bank(seed, channel));
    }
}

// The connections that make the wiring.
void connect_sync(npoe_adapter::Sync_Source& source, const road_model::Sync_Wiring& wiring) {
    using namespace Neuropixels;
    constexpr std::array<std::pair<std::uint32_t, switchmatrixinput_t>, 8> inputs{{
        {0x100, SM_Input_SMA},
        {0x200, SM_Input_SMA1},
        {0x400, SM_Input_PXI1},
        {0x8000, SM_Input_PXI6},
        {0x10000, SM_Input_ADC0},
        {0x80000, SM_Input_ADC3},
        {0x08000000, SM_Input_ADC11},
        {0x01000000, SM_Input_ADC8},
    }};
    source.reset();
    source.clear(SM_Output_StatusBit);
    for (const auto& [bit, input] : inputs) {
        if ((wiring.inputs & bit) != 0) {
            source.connect(SM_Output_StatusBit, input, true);
        }
    }
    if (wiring.clock_period != 0) {
        source.set_clock_period(static_cast<double>(wiring.clock_period) / 30.0);
        source.ask_for_clock(true);
    }
}

} // namespace

void Library_Road::prepare() {
    kept();
}

Library_Road::Library_Road(const road_model::Road_Settings& settings, std::uint32_t streaming)
    : m_settings(settings) {
    m_demux.set_block_length(settings.block_super_frames);
    Demux_Test_Peer::set_transfer_queue_limit(m_demux, settings.most_transfers);
    Demux_Test_Peer::set_block_queue_limit(m_demux, settings.most_blocks);
    m_demux.set_enabled_RHD_stream_count(settings.rhd_streams);
    Demux_Test_Peer::set_would_block(m_demux, [] {
        require(false, "RHD frames: the library waits for words, the model has what it needs");
    });
    for (unsigned port = 0; port < road_model::port_count; ++port) {
        connect_port(port);
    }
    connect_adc();
    if (settings.gain_loaded) {
        set_gains(settings.gain_seed);
    }
    if (settings.host_mode) {
        begin_streaming(streaming);
        begin_run();
    }
}

void Library_Road::connect_port(unsigned port) {
    const Listening listening = m_settings.ports[port];
    const std::shared_ptr<C_L2_CH_Gain_Fix_Filter>& filter = filter_of(m_settings, port).filter;
    std::weak_ptr<demux::I_L2_Demux_CH_Results> end;
    if (m_settings.host_mode) {
        if (listening == Listening::everything) {
            m_streams[port] = std::make_shared<npoe_adapter::Electrode_Stream>(
                static_cast<int>(port) + 1, kept().sync_source, kept().sync_levels,
                std::chrono::nanoseconds(0), road_model::host_queue_length);
        }
        m_demux.set_sample_listener(m_streams[port], port);
        end = m_streams[port];
    } else {
        m_converters[port] = std::make_shared<npoe_adapter::L2_CH_Results_NP_PXI_Format_Converter>();
        if (listening == Listening::everything) {
            end = m_converters[port];
        }
    }
    filter->set_listener(end);
    if (listening != Listening::nobody) {
        m_demux.set_L2_CH_Results_Listener(filter, port);
    }
}

void Library_Road::connect_adc() {
    if (m_settings.host_mode) {
        kept().adc_inputs.reset();
        connect_sync(kept().sync_source, m_settings.sync);
    } else {
        m_adc_converter = std::make_shared<npoe_adapter::RHD_to_PXI_ADC_Format_Converter>();
    }
    if (!m_settings.adc_listening) {
        return;
    }
    if (m_settings.host_mode) {
        m_demux.set_RHD_Results_Listener(kept().adc_stream);
    } else {
        m_demux.set_RHD_Results_Listener(m_adc_converter);
    }
}

// As the pump does it.
void Library_Road::push(const Bytes& transfer) {
    std::copy(transfer.begin(), transfer.end(), kept().transfer->data);
    kept().transfer->size = static_cast<std::uint32_t>(transfer.size());
    m_demux.exchange_xfer_buffer(kept().transfer);
}

void Library_Road::work_on_transfers() {
    while (Demux_Test_Peer::transfers(m_demux) != 0) {
        try {
            Demux_Test_Peer::work_on_transfer(m_demux);
        } catch (const std::runtime_error& error) {
            require(error.what() == std::string("Buffer must contain at least 16 byte"),
                    "text of the exception for a short transfer");
            m_demux.drop_front_xfer_buffer();
        }
    }
}

void Library_Road::work_on_port(unsigned port) {
    Demux_Test_Peer::work_on_blocks(m_demux, port);
}

void Library_Road::work_on_rhd(std::size_t words_left) {
    Demux_Test_Peer::work_on_words(m_demux, words_left);
}

bool Library_Road::forget() {
    if (!Demux_Test_Peer::take_up_words(m_demux)) {
        return false;
    }
    m_demux.drop_unfinished_blocks();
    Demux_Test_Peer::work_on_words(m_demux, 0);
    return true;
}

void Library_Road::set_gains(unsigned seed) {
    for (unsigned port = 0; port < road_model::port_count; ++port) {
        set_channels(filter_of(m_settings, port), seed);
    }
}

void Library_Road::begin_streaming(std::uint32_t streaming) {
    for (const auto& stream : m_streams) {
        if (stream) {
            stream->begin_streaming(streaming);
        }
    }
    kept().adc_stream->begin_streaming(streaming);
}

void Library_Road::begin_run() {
    for (const auto& stream : m_streams) {
        if (stream) {
            stream->begin_run();
        }
    }
    kept().adc_stream->begin_run();
}

void Library_Road::end_run() {
    for (const auto& stream : m_streams) {
        if (stream) {
            stream->end_run();
        }
    }
    kept().adc_stream->end_run();
}

std::vector<Neuropixels::electrodePacket> Library_Road::take_packets(unsigned port) {
    std::vector<Neuropixels::electrodePacket> packets;
    if (m_streams[port]) {
        packets.resize(m_streams[port]->available());
        packets.resize(m_streams[port]->take(packets.data(), packets.size()));
    } else if (m_converters[port]) {
        auto& queue = m_converters[port]->queue();
        while (queue.size() != 0) {
            packets.push_back(*queue.peek_xfer_buffer_from_queue());
            queue.pop();
        }
    }
    return packets;
}

std::vector<Read_ADC_Packet> Library_Road::take_adc_packets() {
    std::vector<Read_ADC_Packet> packets;
    if (!m_settings.host_mode) {
        while (m_adc_converter->queue().size() != 0) {
            Read_ADC_Packet& packet = packets.emplace_back();
            packet.info = {};
            packet.row.resize(npoe_adapter::adc_packet_length);
            m_adc_converter->read_sample_packet_to_buffer(packet.row.data(), &packet.info.Status);
        }
        return packets;
    }
    npoe_adapter::ADC_Stream& stream = *kept().adc_stream;
    const std::size_t count = stream.available();
    const std::size_t row_length = m_settings.adc_row_length;
    std::vector<Neuropixels::PacketInfo> infos(count);
    std::vector<std::int16_t> rows(count * row_length);
    const std::size_t taken = stream.take(infos.data(), rows.data(), row_length, count);
    for (std::size_t i = 0; i < taken; ++i) {
        const auto row = rows.begin() + static_cast<std::ptrdiff_t>(i * row_length);
        packets.push_back({infos[i], {row, row + static_cast<std::ptrdiff_t>(row_length)}});
    }
    return packets;
}

} // namespace Pelgar::ORBE::test
