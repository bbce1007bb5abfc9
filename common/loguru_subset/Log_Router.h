// Layer: logging. Knows all listeners and brings every record to them. Called from every thread; one lock
// keeps records whole and in order, and is held while a record is written.
#pragma once

#include "Log_Record.h"
#include "Log_Sink.h"

#include <memory>
#include <mutex>
#include <string_view>
#include <vector>

namespace loguru::detail {

class Log_Router {
public:
    Log_Router();
    Log_Router(const Log_Router&) = delete;
    Log_Router& operator=(const Log_Router&) = delete;

    // The one of the process. It is never destroyed, because threads may log until the process has ended.
    static Log_Router& instance();

    // Throws std::bad_alloc.
    void add(std::shared_ptr<Log_Sink> sink);

    // Removes the first listener of this name; answers whether there was one.
    bool remove(std::string_view id) noexcept;

    void remove_all() noexcept;

    // Never throws: a listener that fails loses the record, the others get it. What a listener logs while it
    // takes a record is dropped.
    void deliver(const Log_Record& record) noexcept;

private:
    void deliver_locked(const Log_Record& record);
    void update_cutoff() noexcept;

#if !defined(_WIN32)
    // A process is forked between two records, so that the new one, in which no other thread goes on, has
    // whole listeners and a lock that is free.
    static void wait_before_fork();
    static void go_on_in_parent();
    static void go_on_in_child();
#endif

    // Recursive, so that a callback may add and remove listeners.
    std::unique_ptr<std::recursive_mutex> m_mutex = std::make_unique<std::recursive_mutex>();
#if !defined(_WIN32)
    std::unique_ptr<std::recursive_mutex> m_parents_mutex; // of a forked process, for ever locked
#endif
    bool m_delivering = false;
    std::vector<std::shared_ptr<Log_Sink>> m_sinks;
};

} // namespace loguru::detail
