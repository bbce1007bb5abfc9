#include "streaming/Demux_Thread.h"

#include "common/Console.h"
#include "common/Waiting.h"

#include <loguru.hpp>

#include <chrono>
#include <exception>
#include <system_error>

namespace Pelgar::ORBE {

namespace {

using namespace std::chrono_literals;

constexpr auto demux_end_poll_wait = 1000ms;

} // namespace

void Demux_Thread::start() {
    m_demux.start_worker_threads();
    m_demux.signal_to_resync();
    try {
        m_main_demux_thread = std::thread(&Demux_Thread::run, this);
    } catch (const std::system_error&) {
        m_demux.wait_worker_threads_end();
        throw;
    }
    m_main_demux_thread_started = true;
}

void Demux_Thread::run() {
    for (bool ended = false; !ended;) {
        try {
            m_demux.run();
            ended = true;
        } catch (const std::exception& exception) {
            // A transfer that cannot hold a row, or for which memory ran out, says nothing about those behind
            // it.
            LOG_F(ERROR, "Transfer buffer dropped : %s", exception.what());
            m_demux.drop_front_xfer_buffer();
        }
    }
}

void Demux_Thread::stop() {
    if (!m_main_demux_thread_started) {
        LOG_F(INFO, "m_main_demux_thread_started already not started");
        return;
    }
    m_demux.poison_queue();
    while (!m_demux.is_done()) {
        wait_for(demux_end_poll_wait);
        console::out("Waiting for worker thread\n");
    }
    m_main_demux_thread.join();
    m_main_demux_thread_started = false;
}

void Demux_Thread::wait_until_delivered() {
    if (m_main_demux_thread_started) {
        m_demux.wait_until_delivered();
    }
}

} // namespace Pelgar::ORBE
