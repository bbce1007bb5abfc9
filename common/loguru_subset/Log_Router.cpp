#include "Log_Router.h"

#include "Log_Line.h"
#include "Scope_Depth.h"
#include "common/Never_Destroyed.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <string>
#include <utility>

#if !defined(_WIN32)
#include <pthread.h>
#endif

namespace loguru::detail {

namespace {

constexpr const char* indentation_step = ".   ";

// What a listener at this verbosity puts between preamble and text.
std::string indentation_of(Verbosity verbosity) {
    std::string indentation;
    for (std::size_t depth = scope_depth(verbosity); depth != 0; --depth) {
        indentation += indentation_step;
    }
    return indentation;
}

} // namespace

Log_Router::Log_Router() {
#if !defined(_WIN32)
    pthread_atfork(wait_before_fork, go_on_in_parent, go_on_in_child);
#endif
}

#if !defined(_WIN32)

void Log_Router::wait_before_fork() {
    instance().m_mutex->lock();
}

void Log_Router::go_on_in_parent() {
    instance().m_mutex->unlock();
}

void Log_Router::go_on_in_child() {
    // The system has given the thread another number, under which it cannot hand the lock back: it takes a
    // new one.
    Log_Router& router = instance();
    router.m_parents_mutex = std::exchange(router.m_mutex, std::make_unique<std::recursive_mutex>());
#if defined(__SANITIZE_THREAD__)
    // To the sanitizer the thread is the one that took it, and would hold it whatever it locks from now on.
    // The system refuses.
    router.m_parents_mutex->unlock();
#endif
}

#endif

Log_Router& Log_Router::instance() {
    static Pelgar::ORBE::Never_Destroyed<Log_Router> router;
    return *router;
}

void Log_Router::add(std::shared_ptr<Log_Sink> sink) {
    const std::lock_guard lock(*m_mutex);
    m_sinks.push_back(std::move(sink));
    update_cutoff();
}

bool Log_Router::remove(std::string_view id) noexcept {
    const std::lock_guard lock(*m_mutex);
    const auto found =
        std::find_if(m_sinks.begin(), m_sinks.end(), [&](const auto& sink) { return sink->id() == id; });
    if (found == m_sinks.end()) {
        return false;
    }
    m_sinks.erase(found);
    update_cutoff();
    return true;
}

void Log_Router::remove_all() noexcept {
    const std::lock_guard lock(*m_mutex);
    m_sinks.clear();
    update_cutoff();
}

void Log_Router::deliver(const Log_Record& record) noexcept {
    const std::lock_guard lock(*m_mutex);
    if (m_delivering) {
        return;
    }
    m_delivering = true;
    try {
        deliver_locked(record);
    } catch (...) {
        // A record that there is no memory for is lost; whoever logs it goes on.
        static_cast<void>(0);
    }
    m_delivering = false;
}

void Log_Router::deliver_locked(const Log_Record& record) {
    const std::string preamble = preamble_of(record);
    const auto message_for = [&](const std::string& indentation) {
        return Message{record.verbosity,    record.file,   record.line, preamble.c_str(),
                       indentation.c_str(), record.prefix, record.text};
    };

    if (const Verbosity verbosity = g_stderr_verbosity; record.verbosity <= verbosity) {
        const std::string indentation = indentation_of(verbosity);
        write_line(stderr, message_for(indentation));
    }
    // By index and with a share in the listener, because a callback may add and remove listeners.
    std::size_t next = 0;
    while (next < m_sinks.size()) {
        const std::shared_ptr<Log_Sink> sink = m_sinks[next++];
        if (record.verbosity > sink->verbosity()) {
            continue;
        }
        try {
            const std::string indentation = indentation_of(sink->verbosity());
            sink->write(message_for(indentation));
        } catch (...) {
            // The others still get the record.
            continue;
        }
    }
}

void Log_Router::update_cutoff() noexcept {
    Verbosity highest = Verbosity_OFF;
    for (const auto& sink : m_sinks) {
        highest = std::max(highest, sink->verbosity());
    }
    g_sink_verbosity.store(highest, std::memory_order_relaxed);
}

} // namespace loguru::detail
