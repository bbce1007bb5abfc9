#include "Late_Creator.h"

#include <chrono>
#include <thread>

#include <dlfcn.h>
#include <pthread.h>

namespace Pelgar::ORBE::test {

namespace {

// Much longer than a packet's way from the box to the queue.
constexpr std::chrono::milliseconds lateness{200};

} // namespace

std::atomic<bool> Late_Creator::s_is_late{false};

void Late_Creator::hold_up() {
    if (s_is_late) {
        std::this_thread::sleep_for(lateness);
    }
}

} // namespace Pelgar::ORBE::test

// Stands before the one of the C library.
extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*routine)(void*),
                              void* argument) noexcept {
    using Create = int(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
    static const auto next = reinterpret_cast<Create*>(dlsym(RTLD_NEXT, "pthread_create"));
    const int result = next(thread, attributes, routine, argument);
    Pelgar::ORBE::test::Late_Creator::hold_up();
    return result;
}
