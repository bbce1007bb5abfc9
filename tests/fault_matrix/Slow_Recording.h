// Test support, fault matrix. A recording on a disk that hands out its first bytes and then keeps its reader
// waiting: a named pipe. The host's thread, and one that writes.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace Pelgar::ORBE::test {

class Slow_Recording {
public:
    // Takes the place of the file of that name. Throws std::system_error.
    Slow_Recording(const std::string& name, std::size_t bytes_at_once);
    // Hands out the rest, unless nobody reads any more.
    ~Slow_Recording();
    Slow_Recording(const Slow_Recording&) = delete;
    Slow_Recording& operator=(const Slow_Recording&) = delete;

    // Whether all that is handed out has been read, and more is to come.
    bool keeps_waiting() const;

    // The rest, without further waiting.
    void hand_out_the_rest();

private:
    void run();
    bool write(std::size_t end);

    std::vector<char> m_content;
    std::size_t m_bytes_at_once;
    std::size_t m_written = 0; // of the thread
    std::atomic<bool> m_has_paused{false};
    std::atomic<bool> m_is_ending{false};
    int m_descriptor = -1;
    std::mutex m_mutex;
    std::condition_variable m_may_go_on;
    bool m_goes_on = false;
    std::thread m_thread; // the last, since it uses the others
};

} // namespace Pelgar::ORBE::test
