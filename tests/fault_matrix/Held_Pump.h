// Test support, fault matrix. Holds the pump of a recording in each of its waits until it is let on, by which
// a host can read at its leisure. Made and used on the host's thread, whose own waits last no time.
#pragma once

#include "Waiter_Guard.h"

#include <condition_variable>
#include <mutex>
#include <thread>

namespace Pelgar::ORBE::test {

class Held_Pump {
public:
    Held_Pump();
    // Lets it on for good.
    ~Held_Pump();
    Held_Pump(const Held_Pump&) = delete;
    Held_Pump& operator=(const Held_Pump&) = delete;

    bool is_held() const;
    // Up to its next wait.
    void let_on();

    // Whether it is held at all.
    void set_holding(bool holding);

private:
    void wait();

    const std::thread::id m_host;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_is_holding = true;
    bool m_is_held = false;
    Waiter_Guard m_waiter; // the last, since it uses the others
};

} // namespace Pelgar::ORBE::test
