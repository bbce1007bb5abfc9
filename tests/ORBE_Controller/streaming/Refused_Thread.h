// Test support, Linux. A system that refuses one of the threads which it is asked for. Any thread.
#pragma once

#include <atomic>

namespace Pelgar::ORBE::test {

class Refused_Thread {
public:
    // The first thread from now on is number 1.
    explicit Refused_Thread(int number) { s_left = number; }

    ~Refused_Thread() { s_left = 0; }

    Refused_Thread(const Refused_Thread&) = delete;
    Refused_Thread& operator=(const Refused_Thread&) = delete;

    // What every creation of a thread of this process asks.
    static bool is_next() { return s_left != 0 && --s_left == 0; }

private:
    static std::atomic<int> s_left;
};

} // namespace Pelgar::ORBE::test
