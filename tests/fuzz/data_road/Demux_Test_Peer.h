// Fuzzing: drives a demultiplexer on the calling thread, where the product has six threads: each stage is
// worked off when the test says so, so that what comes out depends on nothing but what went in.
#pragma once

#include "rows/C_Async_PSB_And_RHD_Demux.h"

#include <cstddef>
#include <functional>
#include <utility>

namespace Pelgar::ORBE::demux {

struct Demux_Test_Peer {
    // Transfers that wait for the main demux thread.
    static std::size_t transfers(const Async_NP_And_RHD_Demux& demux) {
        return demux.m_main_demux_queue.size();
    }

    // What the main demux thread does with the next of them. Throws as `run` does.
    static void work_on_transfer(Async_NP_And_RHD_Demux& demux) { demux.process_queue_element(); }

    static void set_block_queue_limit(Async_NP_And_RHD_Demux& demux, std::size_t blocks) {
        for (const auto& worker : demux.m_np_workers) {
            worker->set_queue_limit(blocks);
        }
    }

    static void set_transfer_queue_limit(Async_NP_And_RHD_Demux& demux, std::size_t transfers) {
        demux.m_main_demux_queue.set_limit(transfers);
    }

    // What the port's thread does with the blocks that wait for it.
    static void work_on_blocks(Async_NP_And_RHD_Demux& demux, unsigned port) {
        C_NP_Worker_Thread& worker = *demux.m_np_workers[port];
        while (worker.m_queue.size() != 0) {
            worker.decode(worker.m_queue.wait_front());
            worker.m_queue.pop();
        }
    }

    // From now on `would_block` is called, and must not return, where the RHD thread waits for words.
    static void set_would_block(Async_NP_And_RHD_Demux& demux, std::function<void()> would_block) {
        C_RHD_Worker_Thread& worker = *demux.m_rhd_worker;
        worker.m_fifo.m_before_wait = [&worker, would_block = std::move(would_block)] {
            worker.end_burst();
            if (worker.m_fifo.m_unread.empty()) {
                would_block();
            }
        };
    }

    // What the RHD thread does until no more than so many of its words are left.
    static void work_on_words(Async_NP_And_RHD_Demux& demux, std::size_t words_left) {
        C_RHD_Worker_Thread& worker = *demux.m_rhd_worker;
        while (worker.m_fifo.size() > words_left) {
            try {
                worker.read_and_deliver();
            } catch (const RHD_Words_Forgotten&) {
                continue;
            }
        }
        worker.end_burst();
    }

    // Whether the words that wait lie in one piece, or there are none. A thread that reads them in the middle
    // of a frame has then all of them in hand, and so has this one from here on.
    static bool take_up_words(Async_NP_And_RHD_Demux& demux) {
        RHD_Word_Fifo& fifo = demux.m_rhd_worker->m_fifo;
        while (fifo.size() != 0) {
            try {
                return fifo.wait_words().size() == fifo.size();
            } catch (const RHD_Words_Forgotten&) {
                continue;
            }
        }
        return true;
    }
};

} // namespace Pelgar::ORBE::demux
