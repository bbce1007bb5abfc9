// Layer: device controller. The bytes between the pump and the disk, with the ends of runs among them: one
// piece of memory that is allocated once. The pump thread pushes and never waits; the capture's thread takes.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <span>

namespace Pelgar::ORBE {

class Capture_Queue {
public:
    struct Losses {
        std::uint64_t bytes = 0;
        std::uint64_t places = 0; // pieces that follow each other are one
    };

    // What comes next: bytes; or the end of a run, with what it lost; or, with neither, the end of all.
    struct Front {
        std::span<const std::uint8_t> bytes;
        bool ends_run = false;
        Losses lost;
    };

    explicit Capture_Queue(std::size_t capacity);

    // ---- One thread at a time.

    // Appends all bytes or, when there is no room for them, none, which is a loss. After a loss nothing is
    // appended until an eighth of the queue is free, so that there are few places where something is missing.
    void push(std::span<const std::uint8_t> bytes);
    // Everything since the last end is a run.
    void end_run();

    // ---- The capture's thread.

    // Blocks until there is something, at most `most` bytes of it. They stay until they are popped.
    Front wait_front(std::size_t most);
    void pop(const Front& front);

    // ---- Any thread.

    // What is there can still be taken; then comes the end. What is pushed from now on is lost.
    void close();
    // Since construction.
    Losses lost() const;
    // Bytes, and ends of runs.
    bool is_empty() const;
    // 0 to 1.
    double fill() const;

private:
    struct Run_End {
        std::uint64_t position;
        Losses lost;
    };

    void lose(std::size_t bytes); // with the lock
    void copy_in(std::size_t at, std::span<const std::uint8_t> bytes);

    const std::size_t m_capacity;
    const std::unique_ptr<std::uint8_t[]> m_memory;

    mutable std::mutex m_mutex;
    std::condition_variable m_filled;
    std::uint64_t m_pushed = 0; // since construction
    std::uint64_t m_popped = 0;
    std::size_t m_begin = 0; // where in the memory the front is
    std::deque<Run_End> m_run_ends;
    Losses m_lost;
    Losses m_lost_before_run;
    bool m_is_losing = false;
    bool m_is_closed = false;
};

} // namespace Pelgar::ORBE
