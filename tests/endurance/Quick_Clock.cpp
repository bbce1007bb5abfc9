#include "Quick_Clock.h"

#include <common/Waiting.h>

#include <thread>
#include <utility>

namespace Pelgar::ORBE::test {

namespace {

using namespace std::chrono_literals;

// What the simulation waits after each piece, and nobody else does while it plays.
constexpr auto wait_after_piece = 10ms;
constexpr auto any_other_wait = 1ms;

} // namespace

Quick_Clock::Quick_Clock() {
    replace_waiter([this](std::chrono::milliseconds duration) { wait(duration); });
}

Quick_Clock::~Quick_Clock() {
    replace_waiter({});
}

void Quick_Clock::hold_pieces(std::uint64_t piece_bytes, std::function<void(std::uint64_t)> on_piece) {
    const std::lock_guard lock(m_mutex);
    m_holding = true;
    m_piece_bytes = piece_bytes;
    m_on_piece = std::move(on_piece);
    m_played_bytes = 0;
    m_allowed_bytes = 0;
}

void Quick_Clock::allow(std::uint64_t bytes) {
    const std::lock_guard lock(m_mutex);
    m_allowed_bytes = bytes;
    m_changed.notify_all();
}

void Quick_Clock::release() {
    const std::lock_guard lock(m_mutex);
    m_holding = false;
    m_changed.notify_all();
}

std::uint64_t Quick_Clock::played_bytes() const {
    const std::lock_guard lock(m_mutex);
    return m_played_bytes;
}

void Quick_Clock::wait(std::chrono::milliseconds duration) {
    std::unique_lock lock(m_mutex);
    if (!m_holding || duration != wait_after_piece) {
        lock.unlock();
        std::this_thread::sleep_for(any_other_wait);
        return;
    }
    m_played_bytes += m_piece_bytes;
    m_on_piece(m_played_bytes);
    m_changed.wait(lock, [this] { return !m_holding || m_played_bytes + m_piece_bytes <= m_allowed_bytes; });
}

} // namespace Pelgar::ORBE::test
