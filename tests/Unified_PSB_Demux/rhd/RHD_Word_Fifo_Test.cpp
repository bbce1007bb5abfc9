#include "rhd/RHD_Word_Fifo.h"

#include "Demux_Streams.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <numeric>
#include <random>
#include <thread>

namespace {

using Pelgar::ORBE::demux::RHD_Word_Fifo;
using Pelgar::ORBE::demux::RHD_Words_Forgotten;
using Pelgar::ORBE::test::Words;

Words counting(std::size_t count, std::uint16_t first = 0) {
    Words words(count);
    std::iota(words.begin(), words.end(), first);
    return words;
}

TEST(RHD_Word_Fifo, WordsComeOutInOrder) {
    RHD_Word_Fifo fifo;
    fifo.push_words(Words{1, 2, 3});
    fifo.push_words(Words{4});
    for (std::uint16_t expected = 1; expected <= 4; ++expected) {
        EXPECT_EQ(fifo.pop_word(), expected);
    }
}

TEST(RHD_Word_Fifo, SizeCountsEveryWordThatWasNotRead) {
    RHD_Word_Fifo fifo;
    EXPECT_EQ(fifo.size(), 0U);
    fifo.push_words(counting(40'000));
    EXPECT_EQ(fifo.size(), 40'000U);
    fifo.pop_word();
    EXPECT_EQ(fifo.size(), 39'999U);
    fifo.push_words(counting(1));
    EXPECT_EQ(fifo.size(), 40'000U);
    fifo.skip_words(30'000);
    EXPECT_EQ(fifo.size(), 10'000U);
    Words rest(10'000);
    fifo.read_words(rest);
    EXPECT_EQ(fifo.size(), 0U);
}

TEST(RHD_Word_Fifo, ReadAndSkipOfNothingDoNotBlock) {
    RHD_Word_Fifo fifo;
    fifo.read_words({});
    fifo.skip_words(0);
    EXPECT_EQ(fifo.size(), 0U);
}

TEST(RHD_Word_Fifo, StoppedAndEmptyReadsAsZeros) {
    RHD_Word_Fifo fifo;
    fifo.push_words(Words{7, 8});
    EXPECT_FALSE(fifo.stop_signalled());
    fifo.signal_to_stop();
    EXPECT_TRUE(fifo.stop_signalled());
    Words words(5, 0xFFFF);
    fifo.read_words(words);
    EXPECT_EQ(words, (Words{7, 8, 0, 0, 0}));
    EXPECT_EQ(fifo.pop_word(), 0);
    fifo.skip_words(~std::uint64_t{0});
    fifo.push_words(Words{9});
    EXPECT_EQ(fifo.pop_word(), 9);
}

TEST(RHD_Word_Fifo, RunsOfAnyLengthKeepTheOrderBetweenThreads) {
    RHD_Word_Fifo fifo;
    constexpr std::size_t total = 400'000;
    std::thread producer([&fifo] {
        std::mt19937 random(1);
        for (std::size_t sent = 0; sent < total;) {
            const std::size_t run = std::min<std::size_t>(random() % 30'000, total - sent);
            fifo.push_words(counting(run, static_cast<std::uint16_t>(sent)));
            sent += run;
        }
    });
    std::mt19937 random(2);
    std::size_t mismatches = 0;
    for (std::size_t at = 0; at < total;) {
        Words words(std::min<std::size_t>(1 + random() % 3'000, total - at));
        if (random() % 4 == 0) {
            fifo.skip_words(words.size());
        } else {
            fifo.read_words(words);
            mismatches += words == counting(words.size(), static_cast<std::uint16_t>(at)) ? 0U : 1U;
        }
        at += words.size();
    }
    producer.join();
    EXPECT_EQ(mismatches, 0U);
    EXPECT_EQ(fifo.size(), 0U);
}

TEST(RHD_Word_Fifo, WaitUntilUsedReturnsWhenTheReaderComesBackForMore) {
    RHD_Word_Fifo fifo;
    fifo.wait_until_used();
    std::atomic<std::size_t> used{0};
    std::thread reader([&] {
        while (fifo.pop_word() != 0xFFFF) {
            std::this_thread::yield();
            ++used;
        }
    });
    for (std::size_t round = 1; round <= 50; ++round) {
        fifo.push_words(counting(100));
        fifo.wait_until_used();
        EXPECT_EQ(used, round * 100);
    }
    fifo.push_words(Words{0xFFFF});
    reader.join();
}

TEST(RHD_Word_Fifo, ForgottenWordsAreNotRead) {
    RHD_Word_Fifo fifo;
    fifo.push_words(counting(40'000));
    fifo.forget_words();
    fifo.push_words(Words{7, 8});
    Words words;
    while (words.size() < 2) {
        try {
            words.push_back(fifo.pop_word());
        } catch (const RHD_Words_Forgotten&) {
            EXPECT_TRUE(words.empty());
        }
    }
    EXPECT_EQ(words, (Words{7, 8}));
    EXPECT_EQ(fifo.size(), 0U);
}

TEST(RHD_Word_Fifo, ReaderThatWaitsInTheMiddleOfItsWordsIsToldThatTheyAreForgotten) {
    RHD_Word_Fifo fifo;
    Words first;
    Words second(3);
    std::thread reader([&] {
        try {
            fifo.read_words(second);
        } catch (const RHD_Words_Forgotten&) {
            first = second;
        }
        fifo.read_words(second);
    });
    fifo.push_words(Words{1, 2});
    fifo.wait_until_used();
    fifo.forget_words();
    fifo.push_words(Words{3, 4, 5});
    reader.join();
    EXPECT_EQ(first, (Words{1, 2, 0}));
    EXPECT_EQ(second, (Words{3, 4, 5}));
}

TEST(RHD_Word_Fifo, ABlockedReaderSeesTheStopWithTheNextPush) {
    RHD_Word_Fifo fifo;
    Words words(100, 0xFFFF);
    std::thread reader([&] { fifo.read_words(words); });
    fifo.signal_to_stop();
    fifo.push_words(Words{5});
    reader.join();
    // The word arrives before or behind the zeros that stand for the empty FIFO.
    EXPECT_EQ(std::count(words.begin(), words.end(), 0xFFFF), 0);
    EXPECT_GE(std::count(words.begin(), words.end(), 0), 99);
}

} // namespace
