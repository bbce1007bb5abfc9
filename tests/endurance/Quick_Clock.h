// Endurance test. Stands in for the clock behind the library's waits while it lives: the wait between two
// pieces of a recording lasts as long as the readers take, every other wait next to nothing. Time goes on by
// the waits of a recording that is played in its time.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <thread>

namespace Pelgar::ORBE::test {

class Quick_Clock {
public:
    Quick_Clock();
    ~Quick_Clock();
    Quick_Clock(const Quick_Clock&) = delete;
    Quick_Clock& operator=(const Quick_Clock&) = delete;

    // From now on a piece of a recording is waited for until `allow` permits the bytes up to its end. No
    // piece has been played yet. `on_piece` is told on the pump thread of the bytes of all that were.
    void hold_pieces(std::uint64_t piece_bytes, std::function<void(std::uint64_t)> on_piece);
    void allow(std::uint64_t bytes);

    // From now on time goes on by what other threads than this one wait for, each up to what `allow_time`
    // permits since this call.
    void hold_time();
    void allow_time(std::chrono::milliseconds time);

    // Nothing is waited for any more.
    void release();

    // Of the pieces that were played since `hold_pieces`.
    std::uint64_t played_bytes() const;

private:
    using Time = std::chrono::steady_clock::time_point;

    void wait(std::chrono::milliseconds duration);
    void wait_for_piece(std::unique_lock<std::mutex>& lock);
    void pass(std::unique_lock<std::mutex>& lock, std::chrono::milliseconds duration);
    Time now() const;

    const std::thread::id m_host;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_holding = false;
    std::uint64_t m_piece_bytes = 0;
    std::function<void(std::uint64_t)> m_on_piece;
    std::uint64_t m_played_bytes = 0;
    std::uint64_t m_allowed_bytes = 0;

    bool m_holding_time = false;
    Time m_now;
    Time m_allowed_from;
    Time m_allowed_to;
};

} // namespace Pelgar::ORBE::test
