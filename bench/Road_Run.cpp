#include "Road_Run.h"

#include "Bench_Box.h"
#include "Bench_Data.h"
#include "Packet_Reader.h"
#include "Process_Counters.h"

#include "adapter/Adapter_State.h"
#include "common/Waiting.h"

#include <NeuropixAPI.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <initializer_list>
#include <memory>
#include <stdexcept>
#include <thread>

namespace Pelgar::ORBE::bench {

namespace {

using npoe_adapter::g_controller_factory;

constexpr int slot = 0;
constexpr int dock = 1;
constexpr int adc_row_length = 12;
// What the ADC queue holds, less what may come while a transfer is being sorted.
constexpr std::uint64_t adc_packets_on_their_way = 480;
// Super frames of a port on their way when flat out: the block that fills, and one and a half at work.
constexpr std::uint64_t super_frames_on_their_way = 1792 * 5 / 2;
constexpr std::chrono::nanoseconds permission_poll = std::chrono::microseconds(20);
constexpr std::size_t most_flat_out_rate = 64; // times the full box, for which room is made

// The names of a thread as the table shows them, in the order in which the library starts its own.
constexpr std::array<const char*, 6> library_threads = {"NP0", "NP1", "NP2", "NP3", "RHD", "main demux"};

// Switches all sources of the shape on. The exported function does so without data streams of the RHD
// interface.
void enable_streaming(ORBE_Controller_Library& controller, unsigned rhd_streams) {
    const auto enable = [&](std::initializer_list<unsigned> streams) {
        controller.enable_streaming(true, {0, 1, 2, 3}, true, streams, true);
    };
    switch (rhd_streams) {
    case 0:
        return enable({});
    case 8:
        return enable({0, 1, 2, 3, 4, 5, 6, 7});
    case 16:
        return enable({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15});
    case 32:
        return enable({0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 14, 15,
                       16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31});
    default:
        throw std::invalid_argument("0, 8, 16 or 32 RHD streams");
    }
}

double milliseconds_between(std::int64_t from, std::int64_t to) {
    return static_cast<double>(to - from) / 1e6;
}

// What was used up to a moment.
struct Snapshot {
    std::int64_t time = 0;
    std::uint64_t transfers = 0;
    std::uint64_t copy_cpu_ns = 0;
    std::uint64_t locks = 0;
    std::vector<Thread_Counters> threads;
};

class Road {
public:
    Road(const Bench_Stream& stream, const Road_Options& options) : m_stream(stream), m_options(options) {
        m_result.shape = stream.shape();
        m_result.pace = options.pace;
    }

    Road_Result run();

private:
    std::size_t most_transfers() const;
    std::chrono::nanoseconds wait_before(std::uint64_t end) const;
    bool may_deliver(std::uint64_t end) const;
    void open();
    void start_readers();
    void sleep_and_watch_memory(double seconds);
    Snapshot take_snapshot() const;
    void compare(const Snapshot& before, const Snapshot& after);
    void count_lost();
    void find_latencies(const Snapshot& before, const Snapshot& after);

    const Bench_Stream& m_stream;
    Road_Options m_options;
    Road_Result m_result;
    std::shared_ptr<Bench_Box> m_box;
    std::vector<std::int64_t> m_library_threads;
    std::atomic<std::int64_t> m_pump_thread{0};
    std::vector<std::unique_ptr<Packet_Reader>> m_port_readers;
    std::unique_ptr<Packet_Reader> m_adc_reader;
    std::int64_t m_start = 0;
    std::uint64_t m_memory_before = 0;
};

std::size_t Road::most_transfers() const {
    const double seconds = m_options.warm_up_seconds + m_options.seconds + 2.0;
    const double rate = m_options.pace == Pace::box ? m_stream.bytes_per_second()
                                                    : full_box_bytes_per_second * most_flat_out_rate;
    return static_cast<std::size_t>(seconds * rate / static_cast<double>(Bench_Box::transfer_bytes));
}

// Called on the pump thread.
std::chrono::nanoseconds Road::wait_before(std::uint64_t end) const {
    if (m_options.pace == Pace::box) {
        const double due = static_cast<double>(end) / m_stream.bytes_per_second() * 1e9;
        return std::chrono::nanoseconds(static_cast<std::int64_t>(due) - (steady_ns() - m_start));
    }
    return may_deliver(end) ? std::chrono::nanoseconds::zero() : permission_poll;
}

bool Road::may_deliver(std::uint64_t end) const {
    if (m_options.pace == Pace::loss_free || m_port_readers.empty()) {
        return m_stream.frames_before(end) <= m_adc_reader->packets() + adc_packets_on_their_way;
    }
    return std::all_of(m_port_readers.begin(), m_port_readers.end(), [&](const auto& reader) {
        return m_stream.ticks_before(end) <= 12 * reader->packets() + super_frames_on_their_way;
    });
}

void Road::open() {
    const auto known = thread_counters();
    give_back_unused_memory();
    m_memory_before = resident_bytes();
    const auto waiter = replace_waiter([](std::chrono::milliseconds) {});
    *g_controller_factory = [this](bool) {
        m_box = std::make_shared<Bench_Box>(m_stream);
        m_box->prepare([this](std::uint64_t end) { return wait_before(end); }, most_transfers());
        return std::make_shared<ORBE_Controller_Library>(m_box, false);
    };
    if (Neuropixels::openBS(slot) != Neuropixels::SUCCESS) {
        throw std::runtime_error("the box could not be opened");
    }
    replace_waiter(waiter);
    for (int port = 1; port <= 4 && m_options.gain_calibration; ++port) {
        if (Neuropixels::setGainCalibration(slot, port, dock, gain_calibration_path()) !=
            Neuropixels::SUCCESS) {
            throw std::runtime_error("no gain calibration");
        }
    }
    for (const Thread_Counters& thread : thread_counters()) {
        const bool is_new = std::none_of(known.begin(), known.end(),
                                         [&](const auto& other) { return other.id == thread.id; });
        if (is_new) {
            m_library_threads.push_back(thread.id);
        }
    }
}

void Road::start_readers() {
    const int asked = m_options.asked;
    const std::size_t most_ticks = static_cast<std::size_t>(
        m_stream.ticks_before(static_cast<std::uint64_t>(most_transfers()) * Bench_Box::transfer_bytes));
    for (unsigned port = 1; port <= m_stream.shape().ports; ++port) {
        auto packets = std::make_shared<std::vector<Neuropixels::electrodePacket>>(asked);
        m_port_readers.push_back(std::make_unique<Packet_Reader>(
            [port, packets, asked] {
                int got = 0;
                Neuropixels::readElectrodeData(slot, static_cast<int>(port), dock, packets->data(), &got,
                                               asked);
                return got;
            },
            asked, m_options.pace == Pace::box ? most_ticks / 12 : 0));
    }
    auto infos = std::make_shared<std::vector<Neuropixels::PacketInfo>>(asked);
    auto samples = std::make_shared<std::vector<std::int16_t>>(asked * adc_row_length);
    m_adc_reader = std::make_unique<Packet_Reader>(
        [infos, samples, asked] {
            int got = 0;
            Neuropixels::ADC_readPackets(slot, infos->data(), samples->data(), adc_row_length, asked, &got);
            return got;
        },
        asked, m_options.pace == Pace::box ? most_ticks : 0);
}

void Road::sleep_and_watch_memory(double seconds) {
    const std::int64_t end = steady_ns() + static_cast<std::int64_t>(seconds * 1e9);
    while (steady_ns() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        const std::uint64_t now = resident_bytes();
        const double used = now > m_memory_before ? static_cast<double>(now - m_memory_before) : 0.0;
        m_result.memory_at_most_mib = std::max(m_result.memory_at_most_mib, used / (1 << 20));
    }
}

Snapshot Road::take_snapshot() const {
    return {steady_ns(), m_box->transfers(), m_box->copy_cpu_ns(), lock_count(), thread_counters()};
}

void Road::compare(const Snapshot& before, const Snapshot& after) {
    const double bytes = static_cast<double>(after.transfers - before.transfers) *
                         static_cast<double>(Bench_Box::transfer_bytes);
    m_result.seconds = static_cast<double>(after.time - before.time) / 1e9;
    m_result.bytes_per_second = bytes / m_result.seconds;
    m_result.real_time = m_result.bytes_per_second / m_stream.bytes_per_second();
    const double data_seconds = bytes / m_stream.bytes_per_second();

    const auto share = [&](const std::string& name, std::initializer_list<std::int64_t> ids,
                           double cpu_less) {
        Thread_Share thread{name, -cpu_less / 1e9 / data_seconds, 0};
        for (const std::int64_t id : ids) {
            const auto of = [&](const Snapshot& snapshot) {
                const auto found = std::find_if(snapshot.threads.begin(), snapshot.threads.end(),
                                                [&](const auto& counters) { return counters.id == id; });
                return found == snapshot.threads.end() ? Thread_Counters{} : *found;
            };
            const Thread_Counters first = of(before);
            const Thread_Counters last = of(after);
            thread.cpu_per_second += static_cast<double>(last.cpu_ns - first.cpu_ns) / 1e9 / data_seconds;
            thread.switches_per_second +=
                static_cast<double>(last.context_switches - first.context_switches) / m_result.seconds;
        }
        m_result.cpu_per_data_second += thread.cpu_per_second;
        m_result.switches_per_second += thread.switches_per_second;
        m_result.threads.push_back(thread);
    };
    share("pump", {m_pump_thread}, static_cast<double>(after.copy_cpu_ns - before.copy_cpu_ns));
    if (m_library_threads.size() == library_threads.size()) {
        for (const std::size_t i : {std::size_t{5}, std::size_t{0}, std::size_t{1}, std::size_t{2},
                                    std::size_t{3}, std::size_t{4}}) {
            share(library_threads[i], {m_library_threads[i]}, 0);
        }
    }
    for (std::size_t port = 0; port < m_port_readers.size(); ++port) {
        share("reader " + std::to_string(port + 1), {m_port_readers[port]->thread_id()}, 0);
    }
    share("ADC reader", {m_adc_reader->thread_id()}, 0);

    m_result.locks_per_second = static_cast<double>(after.locks - before.locks) / m_result.seconds;
    const double steady_seconds = static_cast<double>(m_box->steady_transfers()) *
                                  static_cast<double>(Bench_Box::transfer_bytes) /
                                  m_stream.bytes_per_second();
    if (steady_seconds > 0) {
        m_result.allocations_per_second = static_cast<double>(m_box->steady_allocations()) / steady_seconds;
    }
}

// After everything that was pushed has been delivered, and taken by the readers.
void Road::count_lost() {
    const std::uint64_t end = m_box->transfers() * Bench_Box::transfer_bytes;
    for (unsigned port = 0; port < m_port_readers.size(); ++port) {
        const std::uint64_t got = m_port_readers[port]->packets();
        m_result.electrode_packets += got;
        const auto asked = static_cast<std::uint64_t>(m_options.asked);
        std::uint64_t due = got;
        while (m_stream.packet_release(port, due) <= end) {
            ++due;
        }
        m_result.lost_electrode_packets += due - got < asked ? 0 : due - got;
    }
    m_result.adc_packets = m_adc_reader->packets();
    const std::uint64_t due = m_stream.frames_before(end);
    const std::uint64_t lost = due > m_result.adc_packets ? due - m_result.adc_packets : 0;
    m_result.lost_adc_packets = lost < static_cast<std::uint64_t>(m_options.asked) ? 0 : lost;
}

// Only where nothing was lost: packets carry no number, so that those behind a lost one are not known.
void Road::find_latencies(const Snapshot& before, const Snapshot& after) {
    const auto measured = [&](std::uint64_t end) {
        const std::uint64_t transfer = (end - 1) / Bench_Box::transfer_bytes;
        return transfer >= before.transfers && transfer < after.transfers;
    };
    if (m_result.lost_electrode_packets == 0) {
        std::vector<double> total;
        std::vector<double> fill;
        std::vector<double> hand_over;
        for (unsigned port = 0; port < m_port_readers.size(); ++port) {
            const Packet_Reader& reader = *m_port_readers[port];
            const std::uint64_t packets = std::min<std::uint64_t>(reader.packets(), reader.kept_times());
            for (std::uint64_t packet = 0; packet < packets; ++packet) {
                const std::uint64_t end = m_stream.packet_end(port, packet);
                const std::uint64_t release = m_stream.packet_release(port, packet);
                if (measured(end) && measured(release)) {
                    const std::int64_t pushed = m_box->delivery_time(end);
                    const std::int64_t released = m_box->delivery_time(release);
                    total.push_back(milliseconds_between(pushed, reader.time(packet)));
                    fill.push_back(milliseconds_between(pushed, released));
                    hand_over.push_back(milliseconds_between(released, reader.time(packet)));
                }
            }
        }
        m_result.electrode_total = latency_of(std::move(total));
        m_result.electrode_block_fill = latency_of(std::move(fill));
        m_result.electrode_hand_over = latency_of(std::move(hand_over));
    }
    if (m_result.lost_adc_packets == 0) {
        std::vector<double> hand_over;
        const std::uint64_t packets =
            std::min<std::uint64_t>(m_adc_reader->packets(), m_adc_reader->kept_times());
        for (std::uint64_t packet = 0; packet < packets; ++packet) {
            const std::uint64_t end = m_stream.frame_end(packet);
            if (measured(end)) {
                hand_over.push_back(
                    milliseconds_between(m_box->delivery_time(end), m_adc_reader->time(packet)));
            }
        }
        m_result.adc_hand_over = latency_of(std::move(hand_over));
    }
}

Road_Result Road::run() {
    open();
    const auto controller = npoe_adapter::current_controller();
    enable_streaming(*controller, m_stream.shape().rhd_streams);
    start_readers();
    sleep_and_watch_memory(0.1);
    m_result.memory_at_rest_mib = m_result.memory_at_most_mib;

    std::atomic<bool> stop{false};
    m_start = steady_ns();
    std::thread pump([&] {
        m_pump_thread = own_thread_id();
        while (!stop && controller->pump_data_to_demux()) {
        }
    });
    sleep_and_watch_memory(m_options.warm_up_seconds);
    const Snapshot before = take_snapshot();
    sleep_and_watch_memory(m_options.seconds);
    const Snapshot after = take_snapshot();

    stop = true;
    m_box->stop();
    pump.join();
    compare(before, after);
    controller->wait_until_delivered();
    // The readers take what has come, in far less time than this.
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    count_lost();
    Neuropixels::closeBS(slot);
    for (const auto& reader : m_port_readers) {
        reader->join();
    }
    m_adc_reader->join();
    if (m_options.pace == Pace::box) {
        find_latencies(before, after);
    }
    *g_controller_factory = {};
    return m_result;
}

} // namespace

Latency latency_of(std::vector<double> milliseconds) {
    if (milliseconds.empty()) {
        return {};
    }
    std::sort(milliseconds.begin(), milliseconds.end());
    const auto at = [&](double share) {
        return milliseconds[static_cast<std::size_t>(share * static_cast<double>(milliseconds.size() - 1))];
    };
    return {milliseconds.size(), at(0.5), at(0.99), milliseconds.back()};
}

Road_Result run_road(const Bench_Stream& stream, const Road_Options& options) {
    return Road(stream, options).run();
}

const char* name_of(Pace pace) {
    switch (pace) {
    case Pace::box:
        return "box";
    case Pace::flat_out:
        return "flat out";
    case Pace::loss_free:
        return "loss free";
    }
    return "";
}

} // namespace Pelgar::ORBE::bench
