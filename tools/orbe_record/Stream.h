// Program orbe-record. A stream of either kind. `Source` reads the packets of a stream from the library into
// batches and gives batches to a writer. When the disk stalls the queue takes 4 s, and then the library's own
// queue 2 s.
#pragma once

#include "A_Stream.h"

#include "common/Block_Queue.h"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <exception>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>

namespace Pelgar::ORBE::recorder {

template <typename Source>
class Stream final : public A_Stream {
public:
    explicit Stream(Source source) : m_source(std::move(source)) {}

    ~Stream() override {
        stop_reading();
        if (!m_writer.joinable()) {
            m_gives_up = true;
        }
        join();
    }

    const std::string& name() const override { return m_source.name(); }

    double bytes_a_sample() const override { return Source::bytes_a_sample; }

    void start_reading() override { m_reader = std::thread(&Stream::read, this); }

    std::optional<std::uint64_t> first_sample() const override {
        const std::int64_t sample = m_first_sample;
        return sample < 0 ? std::nullopt : std::optional(static_cast<std::uint64_t>(sample));
    }

    void start_writing(A_Recording_Writer& writer, std::size_t index) override {
        m_writer = std::thread(&Stream::write, this, std::ref(writer), index);
    }

    void stop_reading() override { m_stops = true; }

    void join() override {
        if (m_reader.joinable()) {
            m_reader.join();
        }
        if (m_writer.joinable()) {
            m_writer.join();
        }
    }

    std::uint64_t packets() const override { return m_packets; }

    double library_fill() const override { return m_source.fill(); }

    std::string problem() const override {
        const std::lock_guard lock(m_problem_mutex);
        return m_problem;
    }

private:
    using Batch = typename Source::Batch;
    using Clock = std::chrono::steady_clock;

    // A batch holds 50 ms.
    static constexpr std::size_t queue_limit = 80;
    static constexpr auto longest_in_batch = std::chrono::milliseconds(50);
    static constexpr auto between_reads = std::chrono::milliseconds(2);

    // A batch without packets is the end.
    void read() {
        auto batch = std::make_unique<Batch>();
        auto begun = Clock::now();
        while (true) {
            const bool is_last = m_stops;
            const std::size_t before = batch->count;
            m_source.read(*batch);
            const std::size_t added = batch->count - before;
            if (added > 0 && before == 0) {
                begun = Clock::now();
                if (m_first_sample < 0) {
                    m_first_sample = static_cast<std::int64_t>(Source::first_sample(*batch));
                }
            }
            m_packets += added;
            const bool is_done = is_last && added == 0;
            const bool is_due =
                batch->count == Source::batch_packets || is_done || Clock::now() - begun >= longest_in_batch;
            if (batch->count > 0 && is_due && !hand_over(batch)) {
                return;
            }
            if (is_done) {
                batch->count = 0;
                hand_over(batch);
                return;
            }
            if (added == 0) {
                std::this_thread::sleep_for(between_reads);
            }
        }
    }

    // Waits while the queue is full: the library's own queue then takes what comes. False when nobody takes
    // anything any more.
    bool hand_over(std::unique_ptr<Batch>& batch) {
        while (!m_queue.exchange_or_drop(batch, queue_limit)) {
            if (m_gives_up) {
                return false;
            }
            std::this_thread::sleep_for(between_reads);
        }
        batch->count = 0;
        return true;
    }

    void write(A_Recording_Writer& writer, std::size_t index) {
        try {
            while (const Batch* const batch = m_queue.wait_front_or_exit()) {
                if (batch->count == 0) {
                    return;
                }
                Source::write(writer, index, *batch);
                m_queue.pop();
            }
        } catch (const std::exception& error) {
            const std::lock_guard lock(m_problem_mutex);
            m_problem = error.what();
        }
        m_gives_up = true;
    }

    Source m_source;
    Block_Queue<Batch> m_queue;
    std::atomic<bool> m_stops{false};
    std::atomic<bool> m_gives_up{false};
    std::atomic<std::uint64_t> m_packets{0};
    std::atomic<std::int64_t> m_first_sample{-1};
    mutable std::mutex m_problem_mutex;
    std::string m_problem;
    std::thread m_reader;
    std::thread m_writer;
};

} // namespace Pelgar::ORBE::recorder
