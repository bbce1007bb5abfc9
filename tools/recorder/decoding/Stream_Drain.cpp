#include "decoding/Stream_Drain.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace Pelgar::ORBE::recorder {

Stream_Drain::Stream_Drain(Stream stream) : m_stream(std::move(stream)), m_thread([this] { run(); }) {}

Stream_Drain::~Stream_Drain() {
    {
        const std::lock_guard lock(m_mutex);
        m_ends = true;
    }
    m_changed.notify_all();
    m_thread.join();
}

void Stream_Drain::run() {
    std::unique_lock lock(m_mutex);
    while (true) {
        m_changed.wait(lock, [this] { return m_ends || m_taken < m_allowed; });
        if (m_ends) {
            return;
        }
        const std::size_t taken =
            m_stream.take(static_cast<std::size_t>(std::min<std::uint64_t>(at_once, m_allowed - m_taken)));
        m_taken += taken;
        m_writes = true;
        lock.unlock();
        std::exception_ptr failure;
        try {
            if (taken == 0) {
                throw std::logic_error("a stream does not have the packets that it said it had");
            }
            m_stream.write(taken);
        } catch (...) {
            failure = std::current_exception();
        }
        lock.lock();
        m_writes = false;
        m_failure = failure;
        m_changed.notify_all();
        if (failure) {
            return;
        }
    }
}

void Stream_Drain::move_on() {
    {
        const std::lock_guard lock(m_mutex);
        rethrow();
        m_allowed = m_known;
        m_known = m_taken + m_stream.available();
    }
    m_changed.notify_all();
}

void Stream_Drain::let_all_through() {
    move_on();
    move_on();
}

void Stream_Drain::wait_until_left(std::size_t most) {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [&] {
        return m_failure || (!m_writes && (m_taken >= m_allowed || m_stream.available() <= most));
    });
    rethrow();
}

void Stream_Drain::rethrow() const {
    if (m_failure) {
        std::rethrow_exception(m_failure);
    }
}

} // namespace Pelgar::ORBE::recorder
