// A stream between a library and a disk that the test plays.
#include "Stream.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace Pelgar::ORBE::recorder;

// What the library has: numbers that the test makes available, in order.
struct Library {
    std::atomic<std::uint32_t> available{0};
    std::atomic<std::uint32_t> taken{0};
};

class Numbers {
public:
    static constexpr std::size_t batch_packets = 100;
    static constexpr double bytes_a_sample = 4.0;

    struct Batch {
        std::size_t count;
        std::uint32_t numbers[batch_packets];
    };

    explicit Numbers(Library& library) : m_library(&library) {}

    const std::string& name() const { return m_name; }

    void read(Batch& batch) {
        while (batch.count < batch_packets && m_library->taken < m_library->available) {
            batch.numbers[batch.count++] = m_library->taken++;
        }
    }

    double fill() const { return 0.25; }

    static std::uint64_t first_sample(const Batch& batch) { return batch.numbers[0] + 7; }

    static void write(A_Recording_Writer& writer, std::size_t index, const Batch& batch) {
        const std::vector<Neuropixels::PacketInfo> infos = [&] {
            std::vector<Neuropixels::PacketInfo> made;
            for (std::size_t i = 0; i < batch.count; ++i) {
                made.push_back({batch.numbers[i], static_cast<std::uint16_t>(index), 0});
            }
            return made;
        }();
        writer.write_adc(infos, {});
    }

private:
    Library* m_library;
    std::string m_name = "numbers";
};

// A disk that stalls and fails on request.
class Disk final : public A_Recording_Writer {
public:
    std::size_t stream_count() const override { return 1; }

    std::string stream_name(std::size_t /*stream*/) const override { return "numbers"; }

    void write_probe(std::size_t, std::span<const Neuropixels::electrodePacket>) override {}

    void write_adc(std::span<const Neuropixels::PacketInfo> infos, std::span<const std::int16_t>) override {
        std::unique_lock lock(m_mutex);
        m_is_in_write = true;
        m_changed.notify_all();
        m_changed.wait(lock, [this] { return !m_is_stalled; });
        if (m_is_full) {
            throw std::runtime_error("the disk is full");
        }
        for (const auto& info : infos) {
            m_numbers.push_back(info.Timestamp);
        }
    }

    void finish() override {}

    std::uint64_t samples(std::size_t) const override { return 0; }

    std::uint64_t lost_samples(std::size_t) const override { return 0; }

    std::uint64_t bytes_written() const override { return 0; }

    void stall(bool stalls) {
        const std::lock_guard lock(m_mutex);
        m_is_stalled = stalls;
        m_changed.notify_all();
    }

    void fill_up() {
        const std::lock_guard lock(m_mutex);
        m_is_full = true;
    }

    void wait_for_write() {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_is_in_write; });
    }

    std::vector<std::uint32_t> numbers() {
        const std::lock_guard lock(m_mutex);
        return m_numbers;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_is_stalled = false;
    bool m_is_full = false;
    bool m_is_in_write = false;
    std::vector<std::uint32_t> m_numbers;
};

class A_Number_Stream : public testing::Test {
protected:
    template <typename Condition>
    static void wait_until(Condition condition) {
        while (!condition()) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }

    void finish() {
        m_stream->stop_reading();
        m_stream->join();
    }

    static std::vector<std::uint32_t> up_to(std::uint32_t count) {
        std::vector<std::uint32_t> numbers;
        for (std::uint32_t number = 0; number < count; ++number) {
            numbers.push_back(number);
        }
        return numbers;
    }

    Library m_library;
    Disk m_disk;
    std::unique_ptr<A_Stream> m_stream = std::make_unique<Stream<Numbers>>(Numbers(m_library));
};

TEST_F(A_Number_Stream, EverythingIsWrittenInOrder) {
    m_stream->start_reading();
    EXPECT_FALSE(m_stream->first_sample());
    m_library.available = 250;
    wait_until([&] { return m_stream->packets() == 250; });
    EXPECT_EQ(m_stream->first_sample(), 7U);
    m_stream->start_writing(m_disk, 0);
    m_library.available = 1037;
    wait_until([&] { return m_stream->packets() == 1037; });
    finish();
    EXPECT_EQ(m_disk.numbers(), up_to(1037));
    EXPECT_EQ(m_stream->problem(), "");
    EXPECT_DOUBLE_EQ(m_stream->library_fill(), 0.25);
}

TEST_F(A_Number_Stream, WhatTheLibraryHasWhenItStopsIsStillRead) {
    m_stream->start_reading();
    m_stream->start_writing(m_disk, 0);
    m_library.available = 4321;
    finish();
    EXPECT_EQ(m_disk.numbers(), up_to(4321));
}

// 80 batches of 50 ms are 4 s of a real stream; behind them the library keeps what comes.
TEST_F(A_Number_Stream, StalledDiskLosesNothing) {
    m_disk.stall(true);
    m_stream->start_reading();
    m_stream->start_writing(m_disk, 0);
    m_library.available = 100;
    m_disk.wait_for_write();
    m_library.available = 8000;
    wait_until([&] { return m_stream->packets() == 8000; });
    m_library.available = 20'000;
    wait_until([&] { return m_library.taken >= 8100; });
    EXPECT_LE(m_library.taken, 8400U) << "the rest stays in the library's queue";
    m_disk.stall(false);
    finish();
    EXPECT_EQ(m_disk.numbers(), up_to(20'000));
}

TEST_F(A_Number_Stream, DiskThatFailsIsToldAndEndsTheStream) {
    m_stream->start_reading();
    m_stream->start_writing(m_disk, 0);
    m_library.available = 300;
    wait_until([&] { return m_disk.numbers().size() == 300; });
    m_disk.fill_up();
    m_library.available = 100'000;
    wait_until([&] { return !m_stream->problem().empty(); });
    EXPECT_EQ(m_stream->problem(), "the disk is full");
    finish();
    EXPECT_EQ(m_disk.numbers(), up_to(300));
}

TEST_F(A_Number_Stream, StreamThatWasNeverWrittenEnds) {
    m_stream->start_reading();
    m_library.available = 100'000;
    wait_until([&] { return m_stream->packets() > 8000; });
    m_stream.reset();
}

} // namespace
