// Test support, fault matrix. A host's visit on a bench, phase by phase. The host's thread; a call that
// waits for what does not come is left waiting on a thread of its own.
#pragma once

#include "ADC_Follower.h"
#include "Bench.h"
#include "Ramp_Follower.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace Pelgar::ORBE::test {

class Visit {
public:
    struct Result {
        bool is_right = false; // every call answered 0, or every sample came and was right
        std::string text;      // for people
        std::string last_error;
    };

    Visit(Bench& bench, const A_Way& way);

    // Closes what is open, and ends the calls that wait.
    ~Visit();
    Visit(const Visit&) = delete;
    Visit& operator=(const Visit&) = delete;

    // Makes the phase's calls, up to the first that fails. Streaming lets the box send a block and more.
    Result carry_out(Phase phase);

    // Lets the box send so many ticks, or what it can, and tells what came of it. Right is what is whole
    // again at the end.
    Result stream_for(std::uint64_t ticks);

    // Whether a call was left waiting.
    bool has_waiting_call() const { return !m_waiting.empty(); }

    // Blocks until the calls that were left waiting have come back; false when that takes too long.
    bool waiting_calls_return();

    static constexpr std::uint64_t block = 1792;

private:
    struct Waiting_Call {
        std::atomic<bool> is_done{false};
        Result result;
        std::thread thread;
    };

    struct Losses {
        std::array<std::uint64_t, 4> samples{};
        std::array<std::uint64_t, 4> wrong{};
        std::array<std::uint64_t, 4> packets{};
        std::uint64_t adc = 0;
        std::uint64_t wrong_adc = 0;
    };

    static Result make(const Host_Call_To_Make& call);
    Result make_watched(const Host_Call_To_Make& call, Phase phase);
    bool waits_in_vain(Phase phase) const;
    void let_run_out();
    void follow_from_here();
    bool let_box_send(std::uint64_t limit);
    void drain();
    void drain_adc();
    Losses losses() const;
    std::string text_of(const Losses& before) const;
    bool is_whole() const;

    Bench& m_bench;
    const A_Way& m_way;
    std::vector<Ramp_Follower> m_ports;
    ADC_Follower m_adc;
    std::uint64_t m_limit = 0;
    std::vector<std::unique_ptr<Waiting_Call>> m_waiting;
};

} // namespace Pelgar::ORBE::test
