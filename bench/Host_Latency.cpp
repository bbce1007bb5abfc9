#include "Host_Latency.h"

#include "Bench_Box.h"
#include "Process_Counters.h"

#include "adapter/Adapter_State.h"

#include <NeuropixAPI.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <memory>
#include <ostream>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

namespace Pelgar::ORBE::bench {

namespace {

using npoe_adapter::g_controller_factory;

constexpr int slot = 2;
constexpr int dock = 1;
constexpr int asked = 64;
constexpr const char* switch_file = "ORBE_HOST_MODE";
// What the library asks of the driver at a time.
constexpr std::size_t transfer_bytes = 0x20000;
constexpr auto poll_interval = std::chrono::milliseconds(1);
constexpr double warm_up_seconds = 0.5;

struct Arrival {
    std::uint64_t packet;
    std::int64_t time;
};

// The first sample of a packet says which one it is: the stream's first sample is the run's.
std::uint64_t number_of(const Neuropixels::electrodePacket& packet) {
    return (std::uint64_t{3} * packet.timestamp[0] + 2) / 10 / 12;
}

void poll(int port, const std::atomic<bool>& ending, std::vector<Arrival>& arrivals) {
    std::vector<Neuropixels::electrodePacket> packets(asked);
    while (!ending) {
        int got = 0;
        Neuropixels::readElectrodeData(slot, port, dock, packets.data(), &got, asked);
        const std::int64_t now = steady_ns();
        for (int i = 0; i < got; ++i) {
            arrivals.push_back({number_of(packets[static_cast<std::size_t>(i)]), now});
        }
        std::this_thread::sleep_for(poll_interval);
    }
}

// While it lives the library finds the switch file and the box.
class Host_Mode_Box {
public:
    Host_Mode_Box(const Bench_Stream& stream, double seconds)
        : m_box(std::make_shared<Bench_Box>(stream, transfer_bytes)) {
        std::ofstream(switch_file) << "pxi\n";
        *g_controller_factory = [box = m_box](bool simulation) {
            return std::make_shared<ORBE_Controller_Library>(box, simulation);
        };
        const double transfers = seconds * stream.bytes_per_second() / static_cast<double>(transfer_bytes);
        const std::int64_t start = steady_ns();
        m_box->prepare(
            [start, &stream](std::uint64_t end) {
                const double due = static_cast<double>(end) / stream.bytes_per_second() * 1e9;
                return std::chrono::nanoseconds(static_cast<std::int64_t>(due) - (steady_ns() - start));
            },
            static_cast<std::size_t>(transfers));
        if (Neuropixels::openBS(slot) != Neuropixels::SUCCESS ||
            Neuropixels::setSWTrigger(slot) != Neuropixels::SUCCESS) {
            throw std::runtime_error("the box does not open in host mode");
        }
    }

    ~Host_Mode_Box() {
        m_box->stop();
        Neuropixels::closeBS(slot);
        *g_controller_factory = {};
        std::filesystem::remove(switch_file);
        // The file is gone for the library as well.
        Neuropixels::getDeviceList(nullptr, 0);
    }

    Host_Mode_Box(const Host_Mode_Box&) = delete;
    Host_Mode_Box& operator=(const Host_Mode_Box&) = delete;

    const Bench_Box& box() const { return *m_box; }

    void stop() { m_box->stop(); }

private:
    std::shared_ptr<Bench_Box> m_box;
};

} // namespace

Latency measure_host_latency(const Bench_Stream& stream, double seconds) {
    Host_Mode_Box host(stream, warm_up_seconds + seconds + 2.0);
    std::atomic<bool> ending{false};
    std::vector<std::vector<Arrival>> arrivals(stream.shape().ports);
    std::vector<std::thread> threads;
    for (unsigned port = 0; port < stream.shape().ports; ++port) {
        arrivals[port].reserve(
            static_cast<std::size_t>((warm_up_seconds + seconds + 1.0) * ticks_per_second));
        threads.emplace_back(poll, static_cast<int>(port) + 1, std::cref(ending), std::ref(arrivals[port]));
    }
    std::this_thread::sleep_for(std::chrono::duration<double>(warm_up_seconds));
    const std::int64_t begin = steady_ns();
    std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
    host.stop();
    ending = true;
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::vector<double> milliseconds;
    for (unsigned port = 0; port < stream.shape().ports; ++port) {
        for (const Arrival& arrival : arrivals[port]) {
            const std::int64_t pushed = host.box().delivery_time(stream.packet_end(port, arrival.packet));
            if (pushed >= begin) {
                milliseconds.push_back(static_cast<double>(arrival.time - pushed) / 1e6);
            }
        }
    }
    if (milliseconds.empty()) {
        throw std::runtime_error("no packet came in host mode");
    }
    return latency_of(std::move(milliseconds));
}

void print_host_latency(std::ostream& out, const Latency& latency) {
    out << "\nhost mode, 4 ports at the box's pace, polled once a millisecond: " << latency.packets
        << " packets\n  from the last sample's transfer to the host: median " << std::fixed
        << std::setprecision(2) << latency.median << " ms, p99 " << latency.p99 << " ms, at most "
        << latency.largest << " ms\n"
        << std::flush;
}

} // namespace Pelgar::ORBE::bench
