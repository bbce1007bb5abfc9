#include "Player.h"

#include "Probe_Bring_Up.h"
#include "checker/Recording_Checker.h"
#include "library_run/Interrupt.h"
#include "library_run/Time_Limit.h"
#include "terminal/Progress_Bar.h"
#include "terminal/Text_Format.h"

#include <NeuropixAPI.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <system_error>
#include <thread>
#include <utility>

namespace Pelgar::ORBE::recording {

namespace {

using Clock = std::chrono::steady_clock;

constexpr int slot = 0;
constexpr int first_port = 1;
constexpr std::chrono::milliseconds look_interval{20};
// The readers get this long to reach their first wait before the stream starts, and packets that nobody
// expects get this long to show up.
constexpr std::chrono::milliseconds settling_time{200};
constexpr std::chrono::seconds close_limit{60};

} // namespace

Player::Player(Play_Options options) : m_options(std::move(options)) {}

bool Player::play(int progress_descriptor) {
    if (!open()) {
        return false;
    }
    bool arrived = false;
    bool started = false;
    try {
        if (prepare(progress_descriptor)) {
            started = true;
            arrived = wait_for_packets(progress_descriptor);
        }
    } catch (const std::exception& error) {
        m_problem = error.what();
    }
    if (arrived) {
        std::this_thread::sleep_for(settling_time);
    }
    close();
    return started && arrived;
}

bool Player::open() {
    Neuropixels::basestationID device{};
    if (Neuropixels::getDeviceList(&device, 1) != 1) {
        m_problem = "the library lists no basestation";
        return false;
    }
    const int result = Neuropixels::openBS(slot);
    if (result != Neuropixels::SUCCESS) {
        m_problem = "openBS answered " + std::to_string(result) + ": the recording '" +
                    m_options.recording.string() + "' cannot be opened";
        close();
        return false;
    }
    for (int port = first_port; port < first_port + static_cast<int>(port_count); ++port) {
        Probe_Bring_Up bring_up(port);
        if (!bring_up.run()) {
            m_problem = bring_up.problem();
            close();
            return false;
        }
        m_identities.push_back(bring_up.identity());
    }
    return true;
}

// Looks through the recording and makes the readers wait for the packets that must come. Knowing their
// number, a reader never asks for a packet that will not come.
bool Player::prepare(int progress_descriptor) {
    Piece_Reader reader{m_options.recording};
    std::error_code unknown_size;
    tools::Progress_Bar progress("Looking through the recording",
                                 std::filesystem::file_size(m_options.recording, unknown_size),
                                 progress_descriptor);
    Recording_Checker checker;
    while (reader.next()) {
        checker.look_at_piece(reader.piece());
        progress.show(reader.bytes_read());
        if (tools::interrupted()) {
            m_problem = "stopped by the user";
            return false;
        }
    }
    checker.look_at_rest(reader.rest());
    m_recording = checker.report();
    m_expected = m_recording.packets();
    if (m_expected == 0) {
        m_problem =
            m_recording.is_recording()
                ? "the recording holds nothing that reaches a host ('orbe-recording check' tells more)"
                : "the file is not a recording of this box ('orbe-recording check' tells more)";
        return false;
    }
    for (unsigned port = first_port; port < first_port + port_count; ++port) {
        m_ports.push_back(
            std::make_unique<Port_Reader>(Port_Stream(m_options.recording, static_cast<int>(port)),
                                          m_recording.ports[port - 1].packets, m_options.verify));
    }
    m_adc = std::make_unique<ADC_Reader>(ADC_Stream(m_options.recording), m_recording.rhd.packets,
                                         m_options.verify);
    return true;
}

bool Player::wait_for_packets(int progress_descriptor) {
    for (const auto& port : m_ports) {
        port->start();
    }
    m_adc->start();
    std::this_thread::sleep_for(settling_time);

    tools::Progress_Bar progress("Playing", m_expected, progress_descriptor);
    if (m_options.paced != nullptr) {
        m_options.paced->start([this](const Packet_Counts& counts) { return taken(counts); });
    }
    const auto start = Clock::now();
    Neuropixels::start_acquisition(slot, first_port);
    std::uint64_t seen = 0;
    auto last_news = start;
    while (!all_complete()) {
        std::this_thread::sleep_for(look_interval);
        const std::uint64_t received =
            sum([](const Reader_Result& result) { return result.received.load(); });
        const auto now = Clock::now();
        m_seconds = std::chrono::duration<double>(now - start).count();
        if (received != seen) {
            seen = received;
            last_news = now;
        }
        progress.show(received, tools::counted(received, "packet", "packets"));
        if (now - last_news > m_options.stall_limit) {
            char text[80];
            std::snprintf(text, sizeof(text), "no new packet for %g s", m_options.stall_limit.count());
            m_problem = text;
            return false;
        }
        if (tools::interrupted()) {
            m_problem = "stopped by the user";
            return false;
        }
    }
    return true;
}

std::vector<const Reader_Result*> Player::ports() const {
    std::vector<const Reader_Result*> results;
    for (const auto& port : m_ports) {
        results.push_back(&port->result());
    }
    return results;
}

std::vector<const Reader_Result*> Player::results() const {
    std::vector<const Reader_Result*> results = ports();
    if (m_adc) {
        results.push_back(&m_adc->result());
    }
    return results;
}

bool Player::all_complete() const {
    return std::ranges::all_of(results(), [](const Reader_Result* result) { return result->complete(); });
}

// Whether the readers have taken what is counted. Up to a batch of packets can be in a reader's hands.
bool Player::taken(const Packet_Counts& counts) const {
    for (unsigned i = 0; i < port_count; ++i) {
        if (m_ports[i]->result().received + Port_Stream::batch_packets < counts.of_port(i + 1)) {
            return false;
        }
    }
    return m_adc->result().received + ADC_Stream::batch_packets >= counts.of_adc();
}

std::uint64_t Player::sum(const std::function<std::uint64_t(const Reader_Result&)>& number) const {
    std::uint64_t total = 0;
    for (const Reader_Result* const result : results()) {
        total += number(*result);
    }
    return total;
}

bool Player::good() const {
    return std::ranges::all_of(
        results(), [this](const Reader_Result* result) { return result->good(m_options.verify); });
}

void Player::close() {
    if (m_options.paced != nullptr) {
        m_options.paced->stop();
    }
    tools::run_within(
        close_limit, [] { Neuropixels::closeBS(slot); },
        [] { std::fprintf(stderr, "orbe-play: closeBS does not come back\n"); });
    for (const auto& port : m_ports) {
        port->join();
    }
    if (m_adc) {
        m_adc->join();
    }
}

} // namespace Pelgar::ORBE::recording
