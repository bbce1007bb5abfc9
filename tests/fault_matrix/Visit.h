// Test support, fault matrix. A host's visit on a bench, phase by phase. The host's thread; a call that
// waits for what does not come is left waiting on a thread of its own.
#pragma once

#include "Bench.h"
#include "Call_Result.h"
#include "Stream_Reader.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <thread>
#include <vector>

namespace Pelgar::ORBE::test {

class Visit {
public:
    Visit(Bench& bench, const A_Way& way);

    // Closes what is open, and ends the calls that wait.
    ~Visit();
    Visit(const Visit&) = delete;
    Visit& operator=(const Visit&) = delete;

    // Makes the phase's calls, up to the first that fails. Streaming lets the box send a block and more.
    Call_Result carry_out(Phase phase);

    // Lets the box send so many ticks, or what it can, and tells what came of it. Right is what is whole
    // again at the end.
    Call_Result stream_for(std::uint64_t ticks);

    // Whether a call was left waiting.
    bool has_waiting_call() const { return !m_waiting.empty(); }

    // Blocks until the calls that were left waiting have come back; false when that takes too long.
    bool waiting_calls_return();

    static constexpr std::uint64_t block = 1792;

private:
    struct Waiting_Call {
        std::atomic<bool> is_done{false};
        Call_Result result;
        std::thread thread;
    };

    Call_Result make_watched(const Host_Call_To_Make& call, Phase phase);
    bool waits_in_vain(Phase phase) const;
    void let_run_out();
    bool let_box_send(std::uint64_t limit);

    Bench& m_bench;
    const A_Way& m_way;
    Stream_Reader m_reader;
    std::uint64_t m_limit = 0;
    std::vector<std::unique_ptr<Waiting_Call>> m_waiting;
};

} // namespace Pelgar::ORBE::test
