#include "Recording_Cells.h"

#include <algorithm>
#include <future>
#include <stdexcept>

namespace Pelgar::ORBE::test {

namespace {

bool streams(Phase phase) {
    return phase == Phase::open || phase == Phase::start || phase == Phase::stream;
}

void must(const Call_Result& result, const char* what) {
    if (!result.is_right) {
        throw std::runtime_error(std::string(what) + " of a recording : " + result.text + " " +
                                 result.last_error);
    }
}

} // namespace

Recording_Cells::Recording_Cells(const A_Way& way, Console_File& console) : m_way(way), m_console(console) {
    std::async(std::launch::async, [this] { learn_healthy_visit(); }).get();
}

void Recording_Cells::learn_healthy_visit() {
    Recording_Visit visit(m_way);
    static_cast<void>(m_console.take_lines());
    must(visit.carry_out(Phase::open), "opening");
    must(visit.carry_out(Phase::start), "start");
    static_cast<void>(visit.play_to_end(0));
    m_packets = visit.packets();
    must(visit.play_to_end(m_packets), "playing");
    must(visit.carry_out(Phase::close), "closing");
    const auto printed = m_console.take_lines();
    for (const Phase phase : all_phases) {
        m_book.learn(phase, printed);
    }
}

Matrix_Row Recording_Cells::run(const Recording_Fault& fault) {
    Matrix_Row row;
    for (const Phase phase : fault.phases) {
        row[phase] = cell(fault, phase);
    }
    return row;
}

Matrix_Cell Recording_Cells::cell(const Recording_Fault& fault, Phase phase) {
    Matrix_Cell first;
    for (const Rung rung : {Rung::nothing, Rung::again, Rung::restart, Rung::reopen}) {
        Matrix_Cell cell;
        // The last error is kept by the thread: each host has one of its own.
        const bool recovers =
            std::async(std::launch::async, [&] { return attempt(fault, phase, rung, cell); }).get();
        if (rung == Rung::nothing) {
            first = cell;
        } else if (first.result != cell.result || first.messages != cell.messages) {
            throw std::runtime_error(fault.name + ", " + name_of(phase) + " : shows as " + first.result +
                                     " and as " + cell.result);
        }
        if (recovers) {
            return cell;
        }
    }
    first.recovery = "nothing helps";
    return first;
}

bool Recording_Cells::attempt(const Recording_Fault& fault, Phase phase, Rung rung, Matrix_Cell& cell) {
    Recording_Visit visit(m_way);
    fault.prepare(visit, phase);
    if (phase > Phase::open) {
        must(visit.carry_out(Phase::open), "opening");
    }
    if (phase > Phase::start) {
        must(visit.carry_out(Phase::start), "start");
    }
    static_cast<void>(m_console.take_lines());
    visit.log().clear();
    fault.strike(visit);
    observe(visit, phase, cell);
    const bool call_waits = visit.has_waiting_call();
    fault.heal(visit);
    cell.recovery = recovery_by(rung, call_waits);
    // Whatever it was, a later opening finds everything right.
    return visit.waiting_call_returns() && climb(visit, phase, rung) &&
           visit.carry_out(Phase::close).is_right &&
           (Recording_Visit::write_recording(), opens_and_plays(visit));
}

void Recording_Cells::observe(Recording_Visit& visit, Phase phase, Matrix_Cell& cell) {
    Call_Result result{true, "", {}};
    if (phase != Phase::stream) {
        result = visit.carry_out(phase);
    }
    if (phase == Phase::open && result.is_right) {
        result = visit.carry_out(Phase::start);
    }
    cell.result = result.text;
    if (streams(phase) && result.is_right) {
        cell.result += (cell.result.empty() ? "" : "; ") + visit.play_to_end(m_packets).text;
    }
    cell.messages = m_book.messages(phase, visit.log().lines(), m_console.take_lines());
    if (!result.last_error.empty()) {
        std::erase(cell.messages, result.last_error);
        cell.messages.insert(cell.messages.begin(), result.last_error);
    }
}

// What the host does about the fault; right is a whole recording.
bool Recording_Cells::climb(Recording_Visit& visit, Phase phase, Rung rung) {
    switch (rung) {
    case Rung::nothing:
        return !streams(phase) || visit.play_to_end(m_packets).is_right;
    case Rung::again:
        return phase == Phase::open && opens_and_plays(visit);
    case Rung::restart:
        return streams(phase) && m_way.restarts_after_end() && visit.carry_out(Phase::stop).is_right &&
               starts_and_plays(visit);
    case Rung::reopen:
        break;
    }
    return visit.carry_out(Phase::close).is_right && opens_and_plays(visit);
}

bool Recording_Cells::opens_and_plays(Recording_Visit& visit) {
    return visit.carry_out(Phase::open).is_right && starts_and_plays(visit);
}

bool Recording_Cells::starts_and_plays(Recording_Visit& visit) {
    return visit.carry_out(Phase::start).is_right && visit.play_to_end(m_packets).is_right;
}

std::string Recording_Cells::recovery_by(Rung rung, bool call_waited) const {
    switch (rung) {
    case Rung::nothing:
        return call_waited ? "nothing; the call that waits returns then" : "nothing";
    case Rung::again:
        return "the call again";
    case Rung::restart:
        return m_way.restart_text();
    case Rung::reopen:
        break;
    }
    return "`closeBS`, `openBS`";
}

} // namespace Pelgar::ORBE::test
