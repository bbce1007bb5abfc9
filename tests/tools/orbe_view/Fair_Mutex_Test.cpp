#include "history/Fair_Mutex.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace Pelgar::ORBE::view {

TEST(Fair_Mutex, GoesToWhoWaitsBeforeWhoHasHadIt) {
    Fair_Mutex mutex;
    for (int round = 0; round < 20; ++round) {
        std::atomic<bool> had_it{false};
        mutex.lock();
        std::thread other([&] {
            mutex.lock();
            had_it = true;
            mutex.unlock();
        });
        while (mutex.wanted_by() != 2) {
            std::this_thread::yield();
        }
        EXPECT_FALSE(had_it);
        mutex.unlock();
        mutex.lock();
        EXPECT_TRUE(had_it);
        mutex.unlock();
        other.join();
    }
    EXPECT_EQ(mutex.wanted_by(), 0U);
}

TEST(Fair_Mutex, BelongsToOneThreadAtATime) {
    constexpr int rounds = 2000;
    Fair_Mutex mutex;
    int count = 0;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 3; ++thread) {
        threads.emplace_back([&] {
            for (int round = 0; round < rounds; ++round) {
                const std::lock_guard lock(mutex);
                ++count;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(count, 3 * rounds);
}

} // namespace Pelgar::ORBE::view
