// Endurance test. Stands in for the clock behind the library's fixed waits while it lives: the wait between
// two pieces of a recording lasts as long as the readers take, every other wait next to nothing.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>

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

    // Pieces are not waited for any more.
    void release();

    // Of the pieces that were played since `hold_pieces`.
    std::uint64_t played_bytes() const;

private:
    void wait(std::chrono::milliseconds duration);

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_holding = false;
    std::uint64_t m_piece_bytes = 0;
    std::function<void(std::uint64_t)> m_on_piece;
    std::uint64_t m_played_bytes = 0;
    std::uint64_t m_allowed_bytes = 0;
};

} // namespace Pelgar::ORBE::test
