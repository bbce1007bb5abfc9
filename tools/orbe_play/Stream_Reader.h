// Program orbe-play. One stream of packets: a thread that does nothing but take packets from the API, since
// the library drops what is not taken at once, and a thread behind it that compares them with what the
// recording holds. Port_Stream and ADC_Stream say what a packet is.
#pragma once

#include "Hand_Over.h"
#include "Prompt_Thread.h"
#include "Reader_Result.h"

#include <algorithm>
#include <exception>
#include <thread>

namespace Pelgar::ORBE::recording {

// `Stream` has a type Batch, a number `batch_packets` of packets in it, a number `batches` of them to hold,
// and
//   int read(Batch&, int count)                         takes packets from the API, answers how many it got
//   std::string difference(const Batch&, std::size_t i) compares packet i with the next that is expected
template <typename Stream>
class Stream_Reader {
public:
    Stream_Reader(Stream stream, std::uint64_t expected, bool verify)
        : m_stream(std::move(stream)), m_verify(verify), m_hand_over(verify ? Stream::batches : 1) {
        m_result.expected = expected;
    }

    // Starts both threads; the reader then waits for its first packets.
    void start() {
        m_reader = std::thread([this] { read_all(); });
        m_comparer = std::thread([this] { compare_all(); });
    }

    // Waits for both threads; to be called after closeBS.
    void join() {
        m_reader.join();
        m_comparer.join();
    }

    const Reader_Result& result() const { return m_result; }

private:
    using Batch = typename Stream::Batch;

    void read_all() {
        make_this_thread_prompt();
        std::uint64_t left = m_result.expected;
        while (left != 0) {
            const auto wanted = static_cast<int>(std::min<std::uint64_t>(left, Stream::batch_packets));
            Batch& batch = m_hand_over.wait_free();
            batch.count = m_stream.read(batch, wanted);
            const auto count = static_cast<std::uint64_t>(batch.count);
            m_hand_over.publish();
            m_result.received += count;
            left -= count;
            if (batch.count < wanted) {
                break;
            }
        }
        m_hand_over.finish();
        if (left == 0) {
            // One more packet is asked for, which must not come: closing the basestation ends the wait.
            Batch surplus;
            m_result.surplus = m_stream.read(surplus, 1) != 0;
        }
    }

    void compare_all() {
        while (const Batch* const batch = m_hand_over.wait_filled()) {
            if (m_verify && m_result.error.empty()) {
                try {
                    compare(*batch);
                } catch (const std::exception& error) {
                    m_result.error = error.what();
                }
            }
            m_result.compared += static_cast<std::uint64_t>(batch->count);
            m_hand_over.release();
        }
    }

    void compare(const Batch& batch) {
        for (std::size_t i = 0; i < static_cast<std::size_t>(batch.count); ++i) {
            const std::string difference = m_stream.difference(batch, i);
            if (difference.empty()) {
                ++m_result.equal;
            } else if (m_result.first_difference.empty()) {
                m_result.first_difference =
                    "packet " + std::to_string(m_result.compared + i) + ": " + difference;
            }
        }
    }

    Stream m_stream;
    bool m_verify;
    Hand_Over<Batch> m_hand_over;
    Reader_Result m_result;
    std::thread m_reader;
    std::thread m_comparer;
};

} // namespace Pelgar::ORBE::recording
