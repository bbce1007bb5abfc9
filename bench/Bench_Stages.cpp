// Each stage of the data path alone, on one thread. Rates count the bytes of the DMA stream that a stage's
// input came from, so that they can be compared with each other and with the whole road.
#include "Bench_Data.h"
#include "Bench_Report.h"
#include "Bench_Stream.h"
#include "Process_Counters.h"

#include "gain/C_L2_CH_Gain_Fix_Filter.h"
#include "packets/L2_CH_Results_NP_PXI_Format_Converter.h"
#include "probe/CP_L1_ADC_TO_Channel.h"
#include "probe/CP_L2_CH_Results_Null_Writer.h"
#include "probe/NP_PSB_Raw_Data_Demuxer.h"
#include "rhd/RHD_Frame_Null_listener.h"
#include "rhd/RHD_Frame_Reader.h"
#include "rhd/RHD_Word_Fifo.h"
#include "rows/C_Async_PSB_And_RHD_Demux.h"
#include "wire/Mux_Row_Format.h"
#include "wire/PSB_Format.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>

namespace {

using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::bench;

// Rows of the stream that carry one super frame of a port.
constexpr std::size_t stream_bytes_per_super_frame =
    demux::psb::bytes_per_super_frame / demux::mux_row::payload_length * demux::mux_row::length;

void memcpy_of_transfers(benchmark::State& state) {
    const Bench_Data& data = bench_data();
    const auto destination = std::make_unique<demux::Main_mux_transfer_buffer_wrapper>();
    for (auto _ : state) {
        for (const auto& transfer : data.transfers) {
            std::memcpy(destination->data, transfer->data, transfer->size);
            benchmark::ClobberMemory();
        }
    }
    report_stream_rate(state, data.stream_bytes);
}

BENCHMARK(memcpy_of_transfers)->Unit(benchmark::kMillisecond);

// The main demux thread's work: rows to port blocks and RHD words. The workers run beside it and give the
// memory back, so that the queues are as warm as in a long run; what counts is the CPU time of this thread
// alone.
void row_split(benchmark::State& state) {
    const Bench_Data& data = bench_data();
    constexpr std::size_t transfers_at_once = 8;
    const auto writer = std::make_shared<demux::CP_L2_CH_Results_Null_Writer>();
    const auto frame_writer = std::make_shared<demux::RHD_Frame_Null_listener>();
    demux::Async_NP_And_RHD_Demux demux;
    for (unsigned port = 0; port < demux::np_port_count; ++port) {
        demux.set_L2_CH_Results_Listener(writer, port);
    }
    demux.set_RHD_Results_Listener(frame_writer);
    demux.set_enabled_RHD_stream_count(full_box.rhd_streams);
    for (auto _ : state) {
        std::uint64_t cpu_ns = 0;
        for (std::size_t first = 0; first < data.transfers.size(); first += transfers_at_once) {
            const std::size_t end = std::min(first + transfers_at_once, data.transfers.size());
            for (std::size_t transfer = first; transfer < end; ++transfer) {
                demux.push_xfer_buffer_to_queue(*data.transfers[transfer]);
            }
            demux.poison_queue();
            demux.start_worker_threads();
            const std::uint64_t before = own_cpu_ns();
            demux.run();
            cpu_ns += own_cpu_ns() - before;
        }
        state.SetIterationTime(static_cast<double>(cpu_ns) / 1e9);
    }
    report_stream_rate(state, data.stream_bytes);
}

BENCHMARK(row_split)->Unit(benchmark::kMillisecond)->UseManualTime();

void feed_blocks(benchmark::State& state, demux::I_L1_Demux_ADC_Results& stage) {
    const Bench_Data& data = bench_data();
    demux::NP_PSB_Raw_Data_Demuxer demuxer(stage);
    for (auto _ : state) {
        for (const auto& block : data.np_blocks) {
            demuxer.feed_psb_raw_data_block_buffer(block->data, block->fill);
        }
    }
    report_stream_rate(state, data.np_stream_bytes);
}

void decode_and_channel_sort(benchmark::State& state) {
    const auto writer = std::make_shared<demux::CP_L2_CH_Results_Null_Writer>();
    demux::CP_L1_ADC_TO_Channel stage;
    stage.set_l2_ch_result_listener(writer);
    feed_blocks(state, stage);
}

BENCHMARK(decode_and_channel_sort)->Unit(benchmark::kMillisecond);

void gain_correction(benchmark::State& state) {
    const auto writer = std::make_shared<demux::CP_L2_CH_Results_Null_Writer>();
    C_L2_CH_Gain_Fix_Filter filter;
    filter.set_listener(writer);
    if (!filter.load_gain_calibration(gain_calibration_path())) {
        state.SkipWithError("no gain calibration");
        return;
    }
    std::uint16_t values[demux::channel_count] = {};
    constexpr std::size_t super_frames = 1200;
    for (auto _ : state) {
        for (std::size_t super_frame = 0; super_frame < super_frames; ++super_frame) {
            filter.publish_ap_ch_data(values);
            if (super_frame % 12 == 11) {
                filter.publish_lp_ch_data(values);
            }
            benchmark::ClobberMemory();
        }
    }
    report_stream_rate(state, super_frames * stream_bytes_per_super_frame);
}

BENCHMARK(gain_correction)->Unit(benchmark::kMicrosecond);

// Packets made, queued and taken out again.
void packet_conversion(benchmark::State& state) {
    npoe_adapter::L2_CH_Results_NP_PXI_Format_Converter converter;
    Neuropixels::electrodePacket packet;
    std::uint16_t values[demux::channel_count] = {};
    constexpr std::size_t packets = 100;
    for (auto _ : state) {
        for (std::size_t i = 0; i < packets; ++i) {
            for (int row = 0; row < 12; ++row) {
                converter.publish_ap_ch_data(values);
            }
            converter.publish_lp_ch_data(values);
            packet = *converter.queue().peek_xfer_buffer_from_queue();
            benchmark::ClobberMemory();
            converter.queue().pop();
        }
    }
    report_stream_rate(state, packets * 12 * stream_bytes_per_super_frame);
}

BENCHMARK(packet_conversion)->Unit(benchmark::kMicrosecond);

// FIFO and frame are kept, as the worker keeps them.
void rhd_frames(benchmark::State& state) {
    const Bench_Data& data = bench_data();
    demux::RHD_Word_Fifo fifo;
    demux::RHD_Frame_Reader reader(fifo);
    demux::RHD_Frame frame;
    reader.set_enabled_stream_count(full_box.rhd_streams);
    for (auto _ : state) {
        state.PauseTiming();
        fifo.restart();
        fifo.push_words(data.rhd_words);
        fifo.signal_to_stop();
        state.ResumeTiming();
        while (fifo.size() != 0) {
            benchmark::DoNotOptimize(reader.read_frame(frame));
        }
    }
    report_stream_rate(state, data.rhd_stream_bytes);
}

BENCHMARK(rhd_frames)->Unit(benchmark::kMillisecond);

} // namespace
