// Tools, recorder. Takes the packets of one stream out of its queue and writes them, on a thread of its own,
// up to a mark that the thread which decodes moves on. Writing blocks on the disk.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>

namespace Pelgar::ORBE::recorder {

class Stream_Drain {
public:
    // The most packets that are taken at once: few enough to stay in the cache between the queue and the
    // file.
    static constexpr std::size_t at_once = 64;

    struct Stream {
        std::function<std::size_t()> available;
        // Takes at most so many packets to itself, and writes as many as it has taken.
        std::function<std::size_t(std::size_t most)> take;
        std::function<void(std::size_t taken)> write;
    };

    // Starts the thread.
    explicit Stream_Drain(Stream stream);
    // Ends it, whatever still waits.
    ~Stream_Drain();
    Stream_Drain(const Stream_Drain&) = delete;
    Stream_Drain& operator=(const Stream_Drain&) = delete;

    // The thread that decodes, while nothing is decoded. All of them rethrow what has stopped the writing.

    // Packets that were there at the last call may be written now: what came with them has come since.
    void move_on();
    // All packets that are there may be.
    void let_all_through();
    // Blocks until so few packets are left, or none that may be written.
    void wait_until_left(std::size_t most);

private:
    void run();
    void rethrow() const;

    const Stream m_stream;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::uint64_t m_taken = 0;
    std::uint64_t m_allowed = 0;
    std::uint64_t m_known = 0;
    bool m_writes = false;
    bool m_ends = false;
    std::exception_ptr m_failure;
    std::thread m_thread; // last: it uses the others
};

} // namespace Pelgar::ORBE::recorder
