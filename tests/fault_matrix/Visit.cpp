#include "Visit.h"

#include "Wait_Until.h"

#include <NeuropixAPI.h>
#include <adapter/Adapter_State.h>
#include <adapter/Pump_Thread.h>

#include <algorithm>
#include <chrono>
#include <exception>

namespace Pelgar::ORBE::test {

namespace {

using namespace std::chrono_literals;

constexpr auto patience = std::chrono::seconds(30);
constexpr auto poll_interval = 200us;

// A read that stalls does not end however long one waits; this long it is looked at.
constexpr auto look_at_stall = 30ms;

// So many ticks fill no queue of the library, whoever reads.
constexpr std::uint64_t step = 240;

bool is_watched(Phase phase) {
    return phase == Phase::stop || phase == Phase::close;
}

} // namespace

Visit::Visit(Bench& bench, const A_Way& way) : m_bench(bench), m_way(way), m_reader(way) {}

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

// ---- Calls.

Call_Result Visit::carry_out(Phase phase) {
    if (phase == Phase::stream) {
        return stream_for(block + 600);
    }
    if (phase == Phase::start) {
        m_limit = m_bench.stream().ticks();
        m_bench.stream().set_limit(m_limit);
    }
    for (const Host_Call_To_Make& call : m_way.calls(phase)) {
        Call_Result result = is_watched(phase) ? make_watched(call, phase) : make_call(call);
        if (!result.is_right) {
            return result;
        }
    }
    if (phase == Phase::open) {
        m_reader.follow_from_here();
    }
    return {true, "0", {}};
}

Call_Result Visit::make_watched(const Host_Call_To_Make& call, Phase phase) {
    m_waiting.push_back(std::make_unique<Waiting_Call>());
    Waiting_Call& waiting = *m_waiting.back();
    waiting.thread = std::thread([&waiting, call] {
        waiting.result = make_call(call);
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
    const Call_Result result = waiting.result;
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

Call_Result Visit::stream_for(std::uint64_t ticks) {
    const Stream_Reader::Losses before = m_reader.losses();
    const std::uint64_t target = m_limit + ticks;
    bool goes_on = true;
    while (goes_on && m_limit < target) {
        m_limit = std::min(m_limit + step, target);
        goes_on = let_box_send(m_limit);
        if (const auto controller = npoe_adapter::current_controller()) {
            controller->wait_until_delivered();
        }
        m_reader.drain();
    }
    if (!goes_on) {
        return {false, m_bench.stream().is_stalled() ? "nothing comes" : "the stream ends", {}};
    }
    return {m_reader.is_whole(), m_reader.text_of(before), {}};
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

} // namespace Pelgar::ORBE::test
