#include "Cell_Run.h"

#include <adapter/Adapter_State.h>

#include <algorithm>
#include <future>
#include <stdexcept>

namespace Pelgar::ORBE::test {

namespace {

// Enough for every block that a fault can touch to be through, and for a whole one behind it.
constexpr std::uint64_t observed_ticks = 3 * Visit::block + 600;

constexpr std::uint8_t device_id = 0x1E;
constexpr std::size_t register_index = 2;

Phase behind(Phase phase) {
    return static_cast<Phase>(static_cast<int>(phase) + 1);
}

std::string text_of(const Matrix_Cell& cell) {
    std::string text = cell.result;
    for (const std::string& message : cell.messages) {
        text += ", \"" + message + "\"";
    }
    return text;
}

bool streams(Phase phase) {
    return phase == Phase::start || phase == Phase::stream;
}

std::size_t looks_at_locks(const Virtual_Box& box) {
    const auto accesses = box.accesses();
    return static_cast<std::size_t>(std::count_if(accesses.begin(), accesses.end(), [](const auto& access) {
        return access == read_of(Virtual_Box::pll_locks, access.value);
    }));
}

} // namespace

Cell_Run::Cell_Run(const A_Way& way, Console_File& console) : m_way(way), m_console(console) {
    learn_healthy_visit();
}

void Cell_Run::learn_healthy_visit() {
    Bench bench(m_way, {});
    Visit visit(bench, m_way);
    // The second one finds what the first one has left behind.
    for (int opening = 0; opening < 2; ++opening) {
        for (const Phase phase : all_phases) {
            bench.headstage().forget_frames();
            bench.box().forget_accesses();
            const std::size_t openings = bench.box().opens();
            const std::uint64_t reads = bench.stream().reads();
            Phase_Use use;
            use.has_read_under_way = bench.stream().is_held_back();
            static_cast<void>(m_console.take_lines());
            must_carry_out(visit, phase, phase);
            if (opening == 0) {
                m_book.learn(phase == Phase::start ? Phase::stream : phase, m_console.take_lines());
            }
            if (phase == Phase::start) {
                static_cast<void>(visit.stream_for(1));
            }
            const auto frames = bench.headstage().frames();
            use.link_frames = frames.size();
            use.id_reads = static_cast<std::size_t>(
                std::count_if(frames.begin(), frames.end(),
                              [](const Link_Frame& frame) { return frame[register_index] == device_id; }));
            use.lock_looks = looks_at_locks(bench.box());
            use.driver_openings = bench.box().opens() - openings;
            use.begins_reads = streams(phase) && bench.stream().reads() > reads;
            m_use[phase] = use;
            if (phase == Phase::configure) {
                m_probe_state = bench.probe_state();
            }
        }
    }
}

Matrix_Row Cell_Run::run(const Matrix_Fault& fault) {
    Matrix_Row row;
    for (const Phase phase : all_phases) {
        if (m_use.at(phase).shows(fault.part, phase)) {
            row[phase] = cell(fault, phase);
        }
    }
    return row;
}

Matrix_Cell Cell_Run::cell(const Matrix_Fault& fault, Phase phase) {
    Matrix_Cell cell;
    for (const Rung rung : {Rung::nothing, Rung::again, Rung::restart, Rung::reopen}) {
        if (!makes_sense(phase, rung)) {
            continue;
        }
        // The last error is kept by the thread: each host has one of its own.
        const Attempt attempted =
            std::async(std::launch::async, [&] { return attempt(fault, phase, rung); }).get();
        if (rung != Rung::nothing && !(attempted.cell == cell)) {
            throw std::runtime_error(fault.name + ", " + name_of(phase) + " : shows as " + text_of(cell) +
                                     " and as " + text_of(attempted.cell));
        }
        cell = attempted.cell;
        if (attempted.has_recovered) {
            cell.recovery = recovery_by(phase, rung, attempted.left_call_waiting);
            return cell;
        }
    }
    cell.recovery = "nothing helps";
    return cell;
}

Cell_Run::Attempt Cell_Run::attempt(const Matrix_Fault& fault, Phase phase, Rung rung) {
    Bench bench(m_way, fault.damage(phase));
    fault.prepare();
    Visit visit(bench, m_way);
    if (phase != Phase::open) {
        must_carry_out(visit, Phase::open, static_cast<Phase>(static_cast<int>(phase) - 1));
    }
    if (phase == Phase::stream) {
        must_carry_out(visit, phase, phase);
    }
    static_cast<void>(m_console.take_lines());
    bench.log().clear();
    bench.headstage().forget_frames();
    fault.strike(bench, phase, m_use.at(phase));
    Attempt attempt;
    attempt.cell = observe(visit, bench, phase);
    fault.heal(bench);
    attempt.left_call_waiting = visit.has_waiting_call();
    const bool waits_for_good = attempt.left_call_waiting && npoe_adapter::g_pump_broke_off;
    if (waits_for_good && rung != Rung::reopen) {
        return attempt; // another start would end the process, for the pump has not been joined
    }
    if (attempt.left_call_waiting && !waits_for_good && !visit.waiting_calls_return()) {
        return attempt;
    }
    attempt.has_recovered =
        climb(visit, phase, rung) && finish(visit, bench, phase) && visit.waiting_calls_return();
    return attempt;
}

Matrix_Cell Cell_Run::observe(Visit& visit, Bench& bench, Phase phase) {
    Matrix_Cell cell;
    std::string last_error;
    if (phase != Phase::stream) {
        const Call_Result result = visit.carry_out(phase);
        cell.result = result.text;
        last_error = result.last_error;
    }
    if (const auto controller = npoe_adapter::current_controller(); controller && !visit.has_waiting_call()) {
        controller->wait_until_delivered(); // what is said of the last rows
    }
    if (streams(phase)) {
        const std::string text = visit.stream_for(observed_ticks).text;
        cell.result += (cell.result.empty() ? "" : "; ") + text;
    }
    cell.messages =
        m_book.messages(streams(phase) ? Phase::stream : phase, bench.log().lines(), m_console.take_lines());
    // The host is told first what it can ask for.
    if (!last_error.empty()) {
        std::erase(cell.messages, last_error);
        cell.messages.push_back(last_error);
        std::rotate(cell.messages.begin(), cell.messages.end() - 1, cell.messages.end());
    }
    return cell;
}

bool Cell_Run::makes_sense(Phase phase, Rung rung) {
    switch (rung) {
    case Rung::again:
        return phase != Phase::stream;
    case Rung::restart:
        return streams(phase);
    default:
        return true;
    }
}

// What the host does about the fault, up to the end of the phase.
bool Cell_Run::climb(Visit& visit, Phase phase, Rung rung) {
    switch (rung) {
    case Rung::again:
        return carry_out(visit, phase, phase);
    case Rung::restart:
        return carry_out(visit, Phase::stop, Phase::stop) && carry_out(visit, Phase::start, Phase::start);
    case Rung::reopen:
        return carry_out(visit, Phase::close, Phase::close) &&
               (phase == Phase::close ||
                carry_out(visit, Phase::open, phase == Phase::stop ? Phase::start : phase));
    default:
        return true;
    }
}

// Whether everything is right from here on: the rest of the visit, or, where data would come no more, what
// follows it.
bool Cell_Run::finish(Visit& visit, Bench& bench, Phase phase) {
    if (phase == Phase::close) {
        return carry_out(visit, Phase::open, Phase::close);
    }
    if (phase == Phase::stop && !carry_out(visit, Phase::start, Phase::start)) {
        return false;
    }
    const Phase next = phase < Phase::stream ? behind(phase) : Phase::stream;
    if (next <= Phase::configure && !carry_out(visit, next, Phase::configure)) {
        return false;
    }
    if (phase < Phase::start && !carry_out(visit, Phase::start, Phase::start)) {
        return false;
    }
    // Two blocks: the first one may hold what came before.
    return visit.stream_for(Visit::block).text != "the stream ends" &&
           carry_out(visit, Phase::stream, Phase::stream) && bench.probe_state() == m_probe_state &&
           carry_out(visit, Phase::stop, Phase::close);
}

bool Cell_Run::carry_out(Visit& visit, Phase first, Phase last) {
    for (Phase phase = first; phase <= last; phase = behind(phase)) {
        if (!visit.carry_out(phase).is_right) {
            return false;
        }
    }
    return true;
}

void Cell_Run::must_carry_out(Visit& visit, Phase first, Phase last) const {
    for (Phase phase = first; phase <= last; phase = behind(phase)) {
        if (const auto result = visit.carry_out(phase); !result.is_right) {
            throw std::runtime_error(std::string(name_of(phase)) + " without a fault : " + result.text + " " +
                                     result.last_error);
        }
    }
}

std::string Cell_Run::recovery_by(Phase phase, Rung rung, bool call_waited) const {
    std::string text;
    switch (rung) {
    case Rung::nothing:
        text = "nothing";
        break;
    case Rung::again:
        text = "the call again";
        break;
    case Rung::restart:
        text = m_way.restart_text();
        break;
    case Rung::reopen:
        text = phase == Phase::close ? "`closeBS` again" : "`closeBS`, `openBS`";
        break;
    }
    return call_waited ? text + "; the call that waits returns then" : text;
}

} // namespace Pelgar::ORBE::test
