#include "Quick_Clock.h"

#include <common/Waiting.h>

#include <utility>

namespace Pelgar::ORBE::test {

namespace {

using namespace std::chrono_literals;

// What the simulation waits after each piece, and nobody else does while it plays.
constexpr auto wait_after_piece = 10ms;
constexpr auto any_other_wait = 1ms;

} // namespace

Quick_Clock::Quick_Clock() : m_host(std::this_thread::get_id()), m_now(std::chrono::steady_clock::now()) {
    replace_waiter([this](std::chrono::milliseconds duration) { wait(duration); });
    replace_planning_clock([this] { return now(); });
}

Quick_Clock::~Quick_Clock() {
    replace_planning_clock({});
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

void Quick_Clock::hold_time() {
    const std::lock_guard lock(m_mutex);
    m_holding_time = true;
    m_allowed_from = m_now;
    m_allowed_to = m_now;
}

void Quick_Clock::allow_time(std::chrono::milliseconds time) {
    const std::lock_guard lock(m_mutex);
    m_allowed_to = m_allowed_from + time;
    m_changed.notify_all();
}

void Quick_Clock::release() {
    const std::lock_guard lock(m_mutex);
    m_holding = false;
    m_holding_time = false;
    m_changed.notify_all();
}

std::uint64_t Quick_Clock::played_bytes() const {
    const std::lock_guard lock(m_mutex);
    return m_played_bytes;
}

Quick_Clock::Time Quick_Clock::now() const {
    const std::lock_guard lock(m_mutex);
    return m_now;
}

void Quick_Clock::wait(std::chrono::milliseconds duration) {
    std::unique_lock lock(m_mutex);
    if (m_holding_time && std::this_thread::get_id() != m_host) {
        pass(lock, duration);
    } else if (m_holding && duration == wait_after_piece) {
        wait_for_piece(lock);
    } else {
        // Also behind a release, where a recording would be waited for without an end.
        m_now += m_holding_time ? std::chrono::milliseconds(0) : duration;
        lock.unlock();
        std::this_thread::sleep_for(any_other_wait);
    }
}

void Quick_Clock::pass(std::unique_lock<std::mutex>& lock, std::chrono::milliseconds duration) {
    m_changed.wait(lock, [&] { return !m_holding_time || m_now + duration <= m_allowed_to; });
    m_now += duration;
}

void Quick_Clock::wait_for_piece(std::unique_lock<std::mutex>& lock) {
    m_played_bytes += m_piece_bytes;
    m_on_piece(m_played_bytes);
    m_changed.wait(lock, [this] { return !m_holding || m_played_bytes + m_piece_bytes <= m_allowed_bytes; });
}

} // namespace Pelgar::ORBE::test
