// Layer: device controller. Writes the stream into a file as it comes from the box, on a thread of its own,
// beside whatever the host does with it. When the disk is too slow it is the capture that loses: the pump
// never waits for it.
#pragma once

#include "common/Relaxed.h"
#include "raw_capture/Capture_Queue.h"
#include "raw_capture/I_Capture_File.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <thread>

namespace Pelgar::ORBE {

// Of all runs of a capture.
struct Raw_Capture_State {
    std::uint64_t written = 0; // bytes
    std::uint64_t lost = 0;
    std::uint64_t places = 0; // where something is missing
    double fill = 0.0;        // of the queue, 0 to 1
    bool is_settled = true;   // whether everything that was taken has been written or given up
    std::string problem;      // why the capture has ended, for people
};

class Raw_Capture {
public:
    // 1.6 s of a full box.
    static constexpr std::size_t queue_bytes = std::size_t{256} << 20U;

    // Starts the thread. Each run gets a file made with `name`. Throws std::bad_alloc and std::system_error.
    Raw_Capture(std::string name, Capture_File_Factory make_file, std::size_t capacity = queue_bytes);
    // Blocks until what was taken has been written.
    ~Raw_Capture();
    Raw_Capture(const Raw_Capture&) = delete;
    Raw_Capture& operator=(const Raw_Capture&) = delete;

    // ---- One thread at a time; copies, and never waits for the disk.

    void begin_run() { m_is_running = true; }

    // The whole rows of a transfer, while a run has begun and not ended.
    void take(std::span<const std::uint8_t> transfer);
    void end_run();

    // ---- Any thread.

    Raw_Capture_State state() const;

private:
    using Clock = std::chrono::steady_clock;

    void run();
    void write(const Capture_Queue::Front& front);
    void finish_run(const Capture_Queue::Losses& lost);
    void tell_of_losses(Clock::time_point now);
    void give_up(const std::string& why);

    const std::string m_name;
    const Capture_File_Factory m_make_file;
    Capture_Queue m_queue;
    Relaxed<bool> m_is_running{false};
    Relaxed<std::uint64_t> m_written{0};
    Relaxed<std::uint64_t> m_given_up{0};
    mutable std::mutex m_problem_mutex;
    std::string m_problem;

    // Of the thread.
    std::unique_ptr<I_Capture_File> m_file; // none between runs
    std::uint64_t m_written_in_run = 0;
    std::uint64_t m_told_lost = 0;
    Clock::time_point m_told_at;

    std::thread m_thread;
};

} // namespace Pelgar::ORBE
