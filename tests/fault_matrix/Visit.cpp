#include "Visit.h"

#include "Wait_Until.h"

#include <NeuropixAPI.h>
#include <adapter/Adapter_State.h>
#include <adapter/Pump_Thread.h>

#include <algorithm>
#include <chrono>
#include <exception>
#include <map>

namespace Pelgar::ORBE::test {

namespace {

using namespace std::chrono_literals;

constexpr auto patience = std::chrono::seconds(30);
constexpr auto poll_interval = 200us;

// A read that stalls does not end however long one waits; this long it is looked at.
constexpr auto look_at_stall = 30ms;

// So many ticks fill no queue of the library, whoever reads.
constexpr std::uint64_t step = 240;

constexpr int port_count = 4;
constexpr std::uint64_t whole_packets = 100;
constexpr std::uint64_t whole_adc_packets = 200;
constexpr int adc_row_length = 12;

std::string last_error() {
    std::array<char, 512> text{};
    Neuropixels::getLastErrorMessage(text.data(), text.size());
    return text.data();
}

bool is_watched(Phase phase) {
    return phase == Phase::stop || phase == Phase::close;
}

std::string counted(std::uint64_t number, const char* what) {
    return std::to_string(number) + " " + what;
}

} // namespace

Visit::Visit(Bench& bench, const A_Way& way) : m_bench(bench), m_way(way), m_adc(Bench::seed) {
    follow_from_here();
}

Visit::~Visit() {
    m_bench.stream().release_stalled_read();
    m_bench.stream().set_limit(DMA_Source::unlimited);
    Neuropixels::closeBS(A_Way::slot);
    if (has_waiting_call()) {
        // Nothing but the end of another run brings back a stop that waits for a pump that broke off.
        for (const Phase phase : {Phase::open, Phase::start, Phase::stop, Phase::close}) {
            static_cast<void>(carry_out(phase));
        }
    }
    if (!waiting_calls_return()) {
        std::terminate();
    }
}

void Visit::follow_from_here() {
    m_ports.clear();
    for (int port = 1; port <= port_count; ++port) {
        m_ports.emplace_back(port, m_way.sample_offset());
    }
    m_adc = ADC_Follower(Bench::seed);
}

// ---- Calls.

Visit::Result Visit::carry_out(Phase phase) {
    if (phase == Phase::stream) {
        return stream_for(block + 600);
    }
    if (phase == Phase::start) {
        m_limit = m_bench.stream().ticks();
        m_bench.stream().set_limit(m_limit);
    }
    for (const Host_Call_To_Make& call : m_way.calls(phase)) {
        Result result = is_watched(phase) ? make_watched(call, phase) : make(call);
        if (!result.is_right) {
            return result;
        }
    }
    if (phase == Phase::open) {
        follow_from_here();
    }
    return {true, "0", {}};
}

Visit::Result Visit::make(const Host_Call_To_Make& call) {
    const std::string name = "`" + call.name + "` ";
    try {
        const int result = call.make();
        if (result == Neuropixels::SUCCESS) {
            return {true, "0", {}};
        }
        return {false, name + std::to_string(result), last_error()};
    } catch (const std::exception& exception) {
        return {false, name + "throws \"" + exception.what() + "\"", last_error()};
    }
}

Visit::Result Visit::make_watched(const Host_Call_To_Make& call, Phase phase) {
    m_waiting.push_back(std::make_unique<Waiting_Call>());
    Waiting_Call& waiting = *m_waiting.back();
    waiting.thread = std::thread([&waiting, call] {
        waiting.result = make(call);
        waiting.is_done = true;
    });
    while (!waiting.is_done) {
        if (waits_in_vain(phase)) {
            return {false, "`" + call.name + "` does not return", {}};
        }
        let_run_out();
        std::this_thread::sleep_for(poll_interval);
    }
    waiting.thread.join();
    const Result result = waiting.result;
    m_waiting.pop_back();
    return result;
}

// Whether the call that was made last waits for what cannot come.
bool Visit::waits_in_vain(Phase phase) const {
    if (m_bench.stream().is_stalled()) {
        const Waiting_Call& waiting = *m_waiting.back();
        const auto last = std::chrono::steady_clock::now() + look_at_stall;
        while (!waiting.is_done && std::chrono::steady_clock::now() < last) {
            std::this_thread::sleep_for(poll_interval);
        }
        return !waiting.is_done;
    }
    return phase == Phase::stop && npoe_adapter::g_pump_broke_off &&
           m_bench.log().count("Waiting main pump to stop. (" + std::to_string(A_Way::slot) + ")") > 0;
}

// A box whose sources are left on goes on sending, which ends the read that is under way.
void Visit::let_run_out() {
    if (m_bench.stream().is_held_back() &&
        m_bench.log().count("Skipping commands for disabling streams ( m_current_error_level > 0 )") > 0) {
        m_limit += step;
        m_bench.stream().set_limit(m_limit);
    }
}

bool Visit::waiting_calls_return() {
    const bool done = wait_until(
        [this] {
            return std::all_of(m_waiting.begin(), m_waiting.end(),
                               [](const auto& waiting) { return waiting->is_done.load(); });
        },
        patience);
    if (done) {
        for (const auto& waiting : m_waiting) {
            waiting->thread.join();
        }
        m_waiting.clear();
    }
    return done;
}

// ---- Streams.

Visit::Result Visit::stream_for(std::uint64_t ticks) {
    const Losses before = losses();
    const std::uint64_t target = m_limit + ticks;
    bool goes_on = true;
    while (goes_on && m_limit < target) {
        m_limit = std::min(m_limit + step, target);
        goes_on = let_box_send(m_limit);
        if (const auto controller = npoe_adapter::current_controller()) {
            controller->wait_until_delivered();
        }
        drain();
    }
    if (!goes_on) {
        return {false, m_bench.stream().is_stalled() ? "nothing comes" : "the stream ends", {}};
    }
    return {is_whole(), text_of(before), {}};
}

// Whether the pump has taken what the box may send and waits for more.
bool Visit::let_box_send(std::uint64_t limit) {
    DMA_Source& stream = m_bench.stream();
    stream.set_limit(limit);
    std::uint64_t reads_at_limit = 0;
    const auto has_ended = [&] {
        return npoe_adapter::g_pump_broke_off || !npoe_adapter::has_pump_thread() || stream.is_stalled();
    };
    const auto has_taken_it = [&] {
        if (stream.ticks() < limit) {
            return false;
        }
        if (reads_at_limit == 0) {
            reads_at_limit = stream.reads();
        }
        // Without a port the box does not keep reads waiting.
        return stream.is_held_back() || stream.reads() > reads_at_limit + 2;
    };
    wait_until([&] { return has_ended() || has_taken_it(); }, patience);
    return !has_ended();
}

void Visit::drain() {
    static std::vector<Neuropixels::electrodePacket> packets(512);
    for (int port = 1; port <= port_count; ++port) {
        int available = 0;
        int room = 0;
        Neuropixels::getElectrodeDataFifoState(A_Way::slot, port, A_Way::dock, &available, &room);
        int count = 0;
        const int wanted = std::min<int>(available, static_cast<int>(packets.size()));
        if (wanted > 0) {
            Neuropixels::readElectrodeData(A_Way::slot, port, A_Way::dock, packets.data(), &count, wanted);
        }
        for (int i = 0; i < count; ++i) {
            m_ports[static_cast<std::size_t>(port) - 1].take(packets[static_cast<std::size_t>(i)]);
        }
    }
    if (m_way.has_adc()) {
        drain_adc();
    }
}

void Visit::drain_adc() {
    const auto converter = npoe_adapter::current_rhd_converter();
    const int available = converter ? static_cast<int>(converter->queue().size()) : 0;
    if (available == 0) {
        return;
    }
    std::vector<Neuropixels::PacketInfo> infos(static_cast<std::size_t>(available));
    std::vector<std::int16_t> rows(infos.size() * adc_row_length);
    int count = 0;
    Neuropixels::ADC_readPackets(A_Way::slot, infos.data(), rows.data(), adc_row_length, available, &count);
    for (int i = 0; i < count; ++i) {
        m_adc.take(rows.data() + static_cast<std::ptrdiff_t>(i) * adc_row_length);
    }
}

Visit::Losses Visit::losses() const {
    Losses losses;
    for (std::size_t port = 0; port < m_ports.size(); ++port) {
        losses.samples[port] = m_ports[port].lost_samples();
        losses.wrong[port] = m_ports[port].wrong_samples();
        losses.packets[port] = m_ports[port].packets();
    }
    losses.adc = m_adc.lost_packets();
    losses.wrong_adc = m_adc.wrong_packets();
    return losses;
}

std::string Visit::text_of(const Losses& before) const {
    const Losses now = losses();
    std::map<std::string, std::vector<std::string>> ports_by_text;
    for (std::size_t port = 0; port < m_ports.size(); ++port) {
        std::string text;
        if (now.packets[port] == before.packets[port]) {
            text = "nothing comes";
        } else {
            if (const auto lost = now.samples[port] - before.samples[port]; lost > 0) {
                text = counted(lost, "samples lost");
            }
            if (const auto wrong = now.wrong[port] - before.wrong[port]; wrong > 0) {
                text += (text.empty() ? "" : ", ") + counted(wrong, "wrong");
            }
        }
        if (!text.empty()) {
            ports_by_text[text].push_back(std::to_string(port + 1));
        }
    }
    std::string whole;
    for (const auto& [text, ports] : ports_by_text) {
        std::string names;
        for (const std::string& port : ports) {
            names += (names.empty() ? "" : ", ") + port;
        }
        const std::string who = ports.size() == 1                ? "port " + names
                                : ports.size() == m_ports.size() ? "each port"
                                                                 : "ports " + names;
        whole += (whole.empty() ? "" : "; ") + who + ": " + text;
    }
    if (const auto lost = now.adc - before.adc; lost > 0) {
        whole += (whole.empty() ? "" : "; ") + ("ADC: " + counted(lost, "packets lost"));
    }
    if (const auto wrong = now.wrong_adc - before.wrong_adc; wrong > 0) {
        whole += (whole.empty() ? "" : "; ") + ("ADC: " + counted(wrong, "packets wrong"));
    }
    return whole.empty() ? "nothing lost" : whole;
}

bool Visit::is_whole() const {
    return std::all_of(m_ports.begin(), m_ports.end(),
                       [](const Ramp_Follower& port) { return port.streak() >= whole_packets; }) &&
           (!m_way.has_adc() || m_adc.streak() >= whole_adc_packets);
}

} // namespace Pelgar::ORBE::test
