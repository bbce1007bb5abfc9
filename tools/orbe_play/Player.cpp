#include "Player.h"

#include "Interrupt.h"
#include "Progress_Bar.h"
#include "Wire_Format.h"

#include <NeuropixAPI.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <future>
#include <utility>

namespace Pelgar::ORBE::recording {

namespace {

using Clock = std::chrono::steady_clock;

constexpr int slot = 0;
constexpr int first_port = 1;
constexpr std::chrono::milliseconds look_interval{20};
// Packets that nobody expects get this long to show up.
constexpr std::chrono::milliseconds surplus_time{200};
constexpr std::chrono::seconds close_limit{60};

} // namespace

Player::Player(Play_Options options)
    : m_options(std::move(options)), m_adc(m_options.recording, m_options.verify) {
    for (int port = first_port; port < first_port + static_cast<int>(port_count); ++port) {
        m_ports.push_back(std::make_unique<Port_Reader>(m_options.recording, port, m_options.verify));
    }
}

Player::~Player() = default;

bool Player::play(int progress_descriptor) {
    if (!open()) {
        return false;
    }
    for (const auto& port : m_ports) {
        m_threads.emplace_back([&reader = *port] { reader.run(); });
    }
    m_threads.emplace_back([this] { m_adc.run(); });

    const auto start = Clock::now();
    bool arrived = false;
    try {
        Neuropixels::start_acquisition(slot, first_port);
        arrived = wait_for_packets(progress_descriptor);
    } catch (const std::exception& error) {
        m_problem = error.what();
    }
    m_seconds = std::chrono::duration<double>(Clock::now() - start).count();
    if (arrived) {
        std::this_thread::sleep_for(surplus_time);
    }
    close();
    return arrived;
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
        Neuropixels::closeBS(slot);
        return false;
    }
    return true;
}

bool Player::wait_for_packets(int progress_descriptor) {
    std::error_code ignored;
    const std::uintmax_t size = std::filesystem::file_size(m_options.recording, ignored);
    Progress_Bar progress("Playing", size, progress_descriptor);
    std::uint64_t seen = 0;
    auto last_news = Clock::now();
    while (!all_ended()) {
        std::this_thread::sleep_for(look_interval);
        const std::uint64_t now_seen = packets();
        const auto now = Clock::now();
        if (now_seen != seen) {
            seen = now_seen;
            last_news = now;
        }
        progress.show(bytes(), std::to_string(seen) + " packets");
        if (now - last_news > m_options.stall_limit) {
            char text[80];
            std::snprintf(text, sizeof(text), "no new packet for %g s", m_options.stall_limit.count());
            m_problem = text;
            return false;
        }
        if (interrupted()) {
            m_problem = "stopped by the user";
            return false;
        }
    }
    return true;
}

bool Player::all_ended() const {
    const auto ended = [](const Reader_Result& result) { return result.ended.load(); };
    return ended(m_adc.result()) && std::all_of(m_ports.begin(), m_ports.end(),
                                                [&](const auto& port) { return ended(port->result()); });
}

std::uint64_t Player::packets() const {
    std::uint64_t sum = m_adc.result().received;
    for (const auto& port : m_ports) {
        sum += port->result().received;
    }
    return sum;
}

std::uint64_t Player::bytes() const {
    std::uint64_t most = m_adc.result().bytes;
    for (const auto& port : m_ports) {
        most = std::max(most, port->result().bytes.load());
    }
    return most;
}

bool Player::good() const {
    return m_adc.result().good(m_options.verify) &&
           std::all_of(m_ports.begin(), m_ports.end(),
                       [&](const auto& port) { return port->result().good(m_options.verify); });
}

void Player::close() {
    // A library that does not come back from closing must not keep this program for ever.
    std::promise<void> closed;
    std::future<void> done = closed.get_future();
    std::thread closer([&closed] {
        Neuropixels::closeBS(slot);
        closed.set_value();
    });
    if (done.wait_for(close_limit) != std::future_status::ready) {
        std::fprintf(stderr, "orbe-play: closeBS does not come back\n");
        std::_Exit(EXIT_FAILURE);
    }
    closer.join();
    for (std::thread& thread : m_threads) {
        thread.join();
    }
    m_threads.clear();
}

} // namespace Pelgar::ORBE::recording
