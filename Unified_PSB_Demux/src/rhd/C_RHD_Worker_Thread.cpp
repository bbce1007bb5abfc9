#include "rhd/C_RHD_Worker_Thread.h"

#include "common/Console.h"
#include "wire/Mux_Row_Format.h"

#include <loguru.hpp>

#include <array>
#include <cstddef>
#include <exception>
#include <utility>

namespace Pelgar::ORBE::demux {

namespace {

constexpr std::size_t wake_up_rows = 1'120;
constexpr std::array<std::uint16_t, wake_up_rows * mux_row::payload_words> wake_up_words{};

} // namespace

C_RHD_Worker_Thread::~C_RHD_Worker_Thread() {
    if (m_thread.joinable()) {
        signal_to_stop();
        push_wake_up_words();
        join();
    }
}

void C_RHD_Worker_Thread::start(std::string name) {
    m_name = std::move(name);
    LOG_F(INFO, "Starting RHD worker thread : %s", m_name.c_str());
    m_thread = std::thread([this] { work(); });
}

void C_RHD_Worker_Thread::signal_to_stop() {
    LOG_SCOPE_F(INFO, "signal_to_stop");
    m_fifo.signal_to_stop();
}

void C_RHD_Worker_Thread::push_wake_up_words() {
    m_fifo.push_words(wake_up_words);
}

void C_RHD_Worker_Thread::join() {
    m_thread.join();
}

void C_RHD_Worker_Thread::set_listener(std::weak_ptr<I_RHD_Frame_Listener> listener) {
    m_listener.set(std::move(listener));
}

std::weak_ptr<I_RHD_Frame_Listener> C_RHD_Worker_Thread::get_listener() const {
    return m_listener.get();
}

void C_RHD_Worker_Thread::work() {
    LOG_F(INFO, "RHD Worker thread started");
    std::uint32_t valid_frames = 0;
    std::uint16_t iteration = 0;
    while (!m_fifo.stop_signalled()) {
        try {
            valid_frames += read_and_deliver() ? 1U : 0U;
        } catch (const RHD_Words_Forgotten&) {
            continue;
        }
        if (iteration++ == 0) {
            console::out(m_name, " worker, processed valid frames : ", valid_frames,
                         ", queue element count : ", m_fifo.size(), '\n');
        }
    }
    end_burst();
    LOG_F(INFO, "RHD Worker thread end");
}

bool C_RHD_Worker_Thread::read_and_deliver() {
    const bool valid = m_reader.read_frame(m_frame);
    if (valid) {
        deliver(m_frame);
    }
    return valid;
}

// What the listener throws costs the frame, not the thread.
void C_RHD_Worker_Thread::deliver(RHD_Frame& frame) {
    try {
        if (!std::exchange(m_in_burst, true)) {
            m_listener.begin_burst();
        }
        if (!m_listener.deliver([&](auto& listener) { listener.publish_rhd_frame(frame); })) {
            console::out("There is no RHD frame listener\n");
        }
    } catch (const std::exception& exception) {
        LOG_F(ERROR, "RHD worker %s : %s", m_name.c_str(), exception.what());
    } catch (...) {
        LOG_F(ERROR, "RHD worker %s : %s", m_name.c_str(), "unknown exception");
    }
}

void C_RHD_Worker_Thread::end_burst() {
    if (std::exchange(m_in_burst, false)) {
        m_listener.end_burst();
    }
}

} // namespace Pelgar::ORBE::demux
