// Test support, random hosts, Linux. Ends the process with the stacks of all its threads when a call does not
// come back. Runs a thread of its own while it lives.
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace Pelgar::ORBE::test {

class Hang_Watch {
public:
    // Each of so many threads tells of its calls. `rescue` is called again and again while a call lasts
    // longer than `blocking`, which the box's own reads may; after `limit` it is a hang.
    Hang_Watch(std::size_t threads, std::chrono::milliseconds blocking, std::chrono::milliseconds limit,
               std::function<void()> rescue);
    ~Hang_Watch();
    Hang_Watch(const Hang_Watch&) = delete;
    Hang_Watch& operator=(const Hang_Watch&) = delete;

    // The name must outlive the watch.
    void begin(std::size_t thread, const std::string& name);
    void end(std::size_t thread);

private:
    using Clock = std::chrono::steady_clock;

    struct Call {
        std::atomic<const std::string*> name{nullptr};
        std::atomic<Clock::rep> since{0};
    };

    void watch();
    std::chrono::milliseconds longest(std::string& name) const;

    std::chrono::milliseconds m_blocking;
    std::chrono::milliseconds m_limit;
    std::function<void()> m_rescue;
    std::vector<std::unique_ptr<Call>> m_calls;
    std::atomic<bool> m_ending{false};
    std::thread m_thread; // the last, since it uses the others
};

} // namespace Pelgar::ORBE::test
