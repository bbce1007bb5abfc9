// The whole road: transfers of the full box pushed as the pump does it, through all threads, gain correction
// and converters, to packets that a host thread for each port and one for the ADC packets take out.
#include "Bench_Data.h"
#include "Bench_Report.h"

#include "gain/C_L2_CH_Gain_Fix_Filter.h"
#include "packets/L2_CH_Results_NP_PXI_Format_Converter.h"
#include "packets/RHD_to_PXI_ADC_Format_Converter.h"
#include "rows/C_Async_PSB_And_RHD_Demux.h"

#include <benchmark/benchmark.h>

#include <array>
#include <atomic>
#include <chrono>
#include <memory>
#include <thread>
#include <vector>

namespace {

using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::bench;
using npoe_adapter::L2_CH_Results_NP_PXI_Format_Converter;
using npoe_adapter::RHD_to_PXI_ADC_Format_Converter;

// How often the stream is sent round in one measurement.
constexpr std::size_t rounds = 6;
// Transfers on their way at once. The driver's pace bounds them on the box; here they would only pile up.
constexpr std::size_t transfers_ahead = 48;

// Everything from the transfer queue to the readers.
class Road {
public:
    Road() {
        for (unsigned port = 0; port < demux::np_port_count; ++port) {
            m_converters[port] = std::make_shared<L2_CH_Results_NP_PXI_Format_Converter>();
            m_filters[port] = std::make_shared<C_L2_CH_Gain_Fix_Filter>();
            m_calibrated = m_filters[port]->load_gain_calibration(gain_calibration_path()) && m_calibrated;
            m_filters[port]->set_listener(m_converters[port]);
            m_demux.set_L2_CH_Results_Listener(m_filters[port], port);
            m_readers.emplace_back([this, port] { read_port(port); });
        }
        m_demux.set_RHD_Results_Listener(m_adc_converter);
        m_demux.set_enabled_RHD_stream_count(rhd_stream_count);
        m_readers.emplace_back([this] { read_adc(); });
        m_demux.start_worker_threads();
        m_main = std::thread([this] { m_demux.run(); });
    }

    bool calibrated() const { return m_calibrated; }

    void push(const demux::Main_mux_transfer_buffer_wrapper& transfer) {
        m_demux.push_xfer_buffer_to_queue(transfer);
        ++m_pushed;
        while (m_pushed > transfers_ahead + processed_transfers()) {
            std::this_thread::sleep_for(std::chrono::microseconds(50));
        }
    }

    // Returns when everything that was pushed has become packets.
    void finish() {
        m_demux.poison_queue();
        m_main.join();
    }

    void release_readers() {
        for (const auto& converter : m_converters) {
            converter->queue().signal_exit();
        }
        m_adc_converter->queue().signal_exit();
        for (std::thread& reader : m_readers) {
            reader.join();
        }
    }

    std::uint64_t packets() const { return m_packets; }

    std::uint64_t adc_packets() const { return m_adc_packets; }

private:
    // What has gone through, told by the RHD frames that have come out.
    std::size_t processed_transfers() const {
        const Bench_Data& data = bench_data();
        return m_demux.get_total_processed_RHD_frame_count() * data.transfers.size() /
               data.super_frames_per_port;
    }

    void read_port(unsigned port) {
        auto& queue = m_converters[port]->queue();
        Neuropixels::electrodePacket packet;
        while (true) {
            packet = *queue.peek_xfer_buffer_from_queue();
            benchmark::DoNotOptimize(packet);
            if (queue.signalled_for_exit()) {
                return;
            }
            queue.pop();
            ++m_packets;
        }
    }

    void read_adc() {
        std::int16_t samples[npoe_adapter::adc_packet_length];
        std::uint16_t status = 0;
        while (true) {
            m_adc_converter->read_sample_packet_to_buffer(samples, &status);
            if (m_adc_converter->queue().signalled_for_exit()) {
                return;
            }
            ++m_adc_packets;
        }
    }

    std::array<std::shared_ptr<L2_CH_Results_NP_PXI_Format_Converter>, demux::np_port_count> m_converters;
    std::array<std::shared_ptr<C_L2_CH_Gain_Fix_Filter>, demux::np_port_count> m_filters;
    std::shared_ptr<RHD_to_PXI_ADC_Format_Converter> m_adc_converter =
        std::make_shared<RHD_to_PXI_ADC_Format_Converter>();
    demux::Async_NP_And_RHD_Demux m_demux;
    std::thread m_main;
    std::vector<std::thread> m_readers;
    std::atomic<std::uint64_t> m_packets{0};
    std::atomic<std::uint64_t> m_adc_packets{0};
    std::size_t m_pushed = 0;
    bool m_calibrated = true;
};

void whole_road(benchmark::State& state) {
    const Bench_Data& data = bench_data();
    std::uint64_t packets = 0;
    std::uint64_t adc_packets = 0;
    for (auto _ : state) {
        state.PauseTiming();
        auto road = std::make_unique<Road>();
        if (!road->calibrated()) {
            state.SkipWithError("no gain calibration");
            road->finish();
            road->release_readers();
            break;
        }
        state.ResumeTiming();
        for (std::size_t round = 0; round < rounds; ++round) {
            for (const auto& transfer : data.transfers) {
                road->push(*transfer);
            }
        }
        road->finish();
        state.PauseTiming();
        road->release_readers();
        packets += road->packets();
        adc_packets += road->adc_packets();
        road.reset();
        state.ResumeTiming();
    }
    report_stream_rate(state, rounds * data.stream_bytes);
    // What a host that keeps up gets; the rest was dropped by the output queues, which hold 501.
    state.counters["packets"] =
        benchmark::Counter(static_cast<double>(packets), benchmark::Counter::kAvgIterations);
    state.counters["adc_packets"] =
        benchmark::Counter(static_cast<double>(adc_packets), benchmark::Counter::kAvgIterations);
}

BENCHMARK(whole_road)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);

} // namespace
