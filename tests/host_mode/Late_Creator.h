// Test support, host mode. A busy machine, on which a thread that has created another one goes on much later
// than the other one. Any thread.
#pragma once

#include <atomic>

namespace Pelgar::ORBE::test {

class Late_Creator {
public:
    Late_Creator() { s_is_late = true; }

    ~Late_Creator() { s_is_late = false; }

    Late_Creator(const Late_Creator&) = delete;
    Late_Creator& operator=(const Late_Creator&) = delete;

    // What every creation of a thread of this process goes through.
    static void hold_up();

private:
    static std::atomic<bool> s_is_late;
};

} // namespace Pelgar::ORBE::test
