#include "Recording_Visit.h"

#include "Bench.h"
#include "Host_Files.h"
#include "Wait_Until.h"

#include <NeuropixAPI.h>
#include <adapter/Adapter_State.h>
#include <adapter/Pump_Thread.h>

#include <algorithm>
#include <chrono>
#include <exception>
#include <fstream>
#include <vector>

namespace Pelgar::ORBE::test {

namespace {

using namespace std::chrono_literals;

constexpr auto patience = 30s;
// What does not return however long one waits is looked at for so long.
constexpr auto look_at_stall = 100ms;

// Two blocks and a part of the third, which no host gets.
constexpr std::uint64_t super_frames = 4600;

std::vector<std::uint8_t> make_bytes() {
    auto options = ramp_options();
    options.seed = Bench::seed;
    options.super_frames = super_frames;
    return recording::make_recording(options);
}

} // namespace

Recording_Visit::Recording_Visit(const A_Way& way)
    : m_way(way), m_home(std::filesystem::current_path()), m_reader(way) {
    std::filesystem::current_path(m_directory.path());
    way.select();
    write_recording();
    std::ofstream("ORBE_DFGMZ_ADAPTER_SIM") << recording << "\n";
    Neuropixels::basestationID id{};
    Neuropixels::getDeviceList(&id, 1);
}

Recording_Visit::~Recording_Visit() {
    m_pump.set_holding(false);
    end_slowness();
    Neuropixels::closeBS(A_Way::slot);
    if (!waiting_call_returns()) {
        std::terminate();
    }
    std::filesystem::current_path(m_home);
}

void Recording_Visit::write_recording() {
    static const auto bytes = make_bytes();
    if (!std::filesystem::is_regular_file(recording)) {
        std::filesystem::remove_all(recording);
    }
    std::ofstream file(recording, std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

void Recording_Visit::make_slow(std::size_t bytes) {
    m_slow = std::make_unique<Slow_Recording>(recording, bytes);
}

void Recording_Visit::end_slowness() {
    if (m_slow) {
        m_slow->hand_out_the_rest();
    }
}

bool Recording_Visit::is_stalled() const {
    return m_slow && m_slow->keeps_waiting();
}

Call_Result Recording_Visit::carry_out(Phase phase) {
    if (phase == Phase::start) {
        m_reader.follow_from_here();
    }
    const bool may_wait = phase == Phase::stop || phase == Phase::close;
    m_pump.set_holding(!may_wait);
    if (may_wait && m_slow) {
        wait_until([this] { return !pump_gets_on(); }, patience);
    }
    for (const Host_Call_To_Make& call : m_way.calls(phase)) {
        const Call_Result result = may_wait ? make_watched(call) : make_call(call);
        if (!result.is_right) {
            return result;
        }
    }
    if (phase == Phase::start) {
        wait_until([this] { return m_pump.is_held() || is_stalled() || npoe_adapter::g_pump_broke_off; },
                   patience);
    }
    return {true, "0", {}};
}

Call_Result Recording_Visit::make_watched(const Host_Call_To_Make& call) {
    m_waiting = std::async(std::launch::async, [call] { return make_call(call); });
    const auto longest = is_stalled() ? look_at_stall : std::chrono::milliseconds(patience);
    if (m_waiting.wait_for(longest) == std::future_status::timeout) {
        return {false, "`" + call.name + "` does not return", {}};
    }
    return m_waiting.get();
}

bool Recording_Visit::waiting_call_returns() {
    if (!has_waiting_call()) {
        return true;
    }
    if (m_waiting.wait_for(patience) == std::future_status::timeout) {
        return false;
    }
    return m_waiting.get().is_right;
}

bool Recording_Visit::pump_gets_on() const {
    return npoe_adapter::has_pump_thread() && !npoe_adapter::g_pump_broke_off && !is_stalled();
}

// The pump is let on once the host has all that the last piece brought.
Call_Result Recording_Visit::play_to_end(std::uint64_t packets) {
    bool goes_on = true;
    while (goes_on) {
        goes_on =
            wait_until([this] { return m_pump.is_held() || !pump_gets_on(); }, patience) && pump_gets_on();
        if (const auto controller = npoe_adapter::current_controller()) {
            controller->wait_until_delivered();
        }
        m_reader.drain();
        m_pump.let_on();
    }
    const Stream_Reader::Losses losses = m_reader.losses();
    const std::string text = m_reader.text_of({});
    if (text != "nothing lost") {
        return {false, text, {}};
    }
    const bool is_whole = std::all_of(losses.packets.begin(), losses.packets.end(),
                                      [&](std::uint64_t count) { return count == packets; });
    return {is_whole, is_whole ? "nothing lost" : "the stream ends early", {}};
}

std::uint64_t Recording_Visit::packets() const {
    const auto packets = m_reader.losses().packets;
    return *std::min_element(packets.begin(), packets.end());
}

} // namespace Pelgar::ORBE::test
