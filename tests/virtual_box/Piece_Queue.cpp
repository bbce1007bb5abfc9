#include "Piece_Queue.h"

#include <utility>

namespace Pelgar::ORBE::test {

void Piece_Queue::push(Piece piece) {
    const std::lock_guard lock(m_mutex);
    m_pieces.push_back(std::move(piece));
    m_changed.notify_all();
}

Piece Piece_Queue::wait() {
    std::unique_lock lock(m_mutex);
    m_waiting = true;
    m_changed.wait(lock, [&] { return !m_pieces.empty() || m_ended; });
    m_waiting = false;
    if (m_pieces.empty()) {
        return nullptr;
    }
    Piece piece = std::move(m_pieces.front());
    m_pieces.pop_front();
    return piece;
}

bool Piece_Queue::is_idle() const {
    const std::lock_guard lock(m_mutex);
    return m_abandoned || (m_waiting && m_pieces.empty());
}

void Piece_Queue::abandon() {
    const std::lock_guard lock(m_mutex);
    m_abandoned = true;
    m_pieces.clear();
}

void Piece_Queue::end() {
    const std::lock_guard lock(m_mutex);
    m_ended = true;
    m_changed.notify_all();
}

} // namespace Pelgar::ORBE::test
