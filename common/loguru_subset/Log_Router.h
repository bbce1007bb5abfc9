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

    // Recursive, so that a callback may add and remove listeners.
    std::recursive_mutex m_mutex;
    bool m_delivering = false;
    std::vector<std::shared_ptr<Log_Sink>> m_sinks;
};

} // namespace loguru::detail
