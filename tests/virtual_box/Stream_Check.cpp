#include "Stream_Check.h"

#include "expectation/ADC_Model.h"
#include "expectation/Port_Model.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <functional>

namespace Pelgar::ORBE::test {

namespace {

using namespace std::chrono_literals;

constexpr int slot = 0;
constexpr auto poll_interval = 1ms;

// How long everything may stand still before a test is given up.
constexpr auto patience = 60s;

// Polls until `done`; false when `progress` has not changed for too long.
bool wait_until(const std::function<bool()>& done, const std::function<std::uint64_t()>& progress) {
    std::uint64_t last = progress();
    auto since = std::chrono::steady_clock::now();
    while (!done()) {
        std::this_thread::sleep_for(poll_interval);
        const auto now = std::chrono::steady_clock::now();
        if (const std::uint64_t current = progress(); current != last) {
            last = current;
            since = now;
        } else if (now - since > patience) {
            return false;
        }
    }
    return true;
}

// The next packet that the model makes of the pieces; null after the last piece.
template <typename Model>
auto next_due(Model& model, Piece_Queue& pieces) {
    while (true) {
        const auto* const packet = model.next();
        if (packet != nullptr) {
            return packet;
        }
        const Piece piece = pieces.wait();
        if (!piece) {
            return packet;
        }
        model.feed(*piece);
    }
}

} // namespace

Stream_Check::Stream_Check(DMA_Source& source, ADC_Status adc_status)
    : m_source(source), m_adc_status(adc_status), m_pace(source) {
    m_source.set_observer([this](std::span<const std::uint8_t> bytes) {
        const auto piece = std::make_shared<const std::vector<std::uint8_t>>(bytes.begin(), bytes.end());
        for (Piece_Queue& queue : m_queues) {
            queue.push(piece);
        }
    });
    for (unsigned port = 1; port <= box_port_count; ++port) {
        m_threads.emplace_back(&Stream_Check::read_port, this, port);
    }
    m_threads.emplace_back(&Stream_Check::read_adc, this);
}

Stream_Check::~Stream_Check() {
    if (!m_threads.empty()) {
        finish();
    }
}

bool Stream_Check::run_to(std::uint64_t ticks) {
    allow(ticks);
    const auto arrived = [&] { return m_source.ticks() >= ticks && m_source.is_held_back() && all_idle(); };
    return wait_until(arrived, [&] { return m_source.ticks(); });
}

bool Stream_Check::wait_until_idle() const {
    return wait_until([&] { return all_idle(); },
                      [&] { return m_pace.count(0) + m_pace.count(Pace::adc_reader); });
}

void Stream_Check::pause() {
    const std::lock_guard lock(m_mutex);
    m_paused = true;
}

void Stream_Check::resume() {
    const std::lock_guard lock(m_mutex);
    m_paused = false;
    m_resumed.notify_all();
}

void Stream_Check::finish() {
    m_source.set_observer({});
    resume();
    if (!all_idle()) {
        // A reader waits in the library for a packet that is due and does not come.
        Neuropixels::closeBS(slot);
    }
    for (Piece_Queue& queue : m_queues) {
        queue.end();
    }
    for (std::thread& thread : m_threads) {
        thread.join();
    }
    m_threads.clear();
}

std::vector<std::string> Stream_Check::differences() const {
    const std::lock_guard lock(m_mutex);
    return m_differences;
}

void Stream_Check::read_port(unsigned port) {
    Piece_Queue& pieces = m_queues[port - 1];
    const std::string name = "port " + std::to_string(port);
    recording::Port_Model model(port);
    bool equal = true;
    Neuropixels::electrodePacket expected;
    Neuropixels::electrodePacket packet;
    while (const auto* const due = next_due(model, pieces)) {
        expected = *due;
        if (m_correction) {
            m_correction(port, expected);
        }
        wait_while_paused();
        int actual = 0;
        Neuropixels::readElectrodeData(slot, static_cast<int>(port), 0, &packet, &actual, 1);
        if (actual != 1) {
            note(name + " : turned away with a packet due");
            break;
        }
        const bool compared = m_compare_first_packets || m_pace.count(port - 1) != 0;
        if (compared && equal && std::memcmp(&packet, &expected, sizeof(packet)) != 0) {
            note(name + " : packet " + std::to_string(m_pace.count(port - 1)) + " differs");
            equal = false;
        }
        m_pace.received(port - 1);
    }
    pieces.abandon();
}

void Stream_Check::read_adc() {
    Piece_Queue& pieces = m_queues[Pace::adc_reader];
    recording::ADC_Model model;
    bool equal = true;
    while (const auto* const due = next_due(model, pieces)) {
        wait_while_paused();
        int actual = 0;
        Neuropixels::PacketInfo info{};
        recording::ADC_Packet packet;
        Neuropixels::ADC_readPackets(slot, &info, packet.samples.data(),
                                     static_cast<int>(packet.samples.size()), 1, &actual);
        packet.status = m_adc_status == ADC_Status::compared ? info.Status : due->status;
        if (actual != 1) {
            note("ADC : turned away with a packet due");
            break;
        }
        if (equal && !(packet == *due)) {
            note("ADC : packet " + std::to_string(adc_packets()) + " differs");
            equal = false;
        }
        m_pace.received(Pace::adc_reader);
    }
    pieces.abandon();
}

void Stream_Check::wait_while_paused() {
    std::unique_lock lock(m_mutex);
    m_resumed.wait(lock, [&] { return !m_paused; });
}

void Stream_Check::note(const std::string& text) {
    const std::lock_guard lock(m_mutex);
    m_differences.push_back(text);
}

bool Stream_Check::all_idle() const {
    return std::all_of(m_queues.begin(), m_queues.end(),
                       [](const Piece_Queue& queue) { return queue.is_idle(); });
}

} // namespace Pelgar::ORBE::test
