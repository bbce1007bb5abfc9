#include "raw_capture/Raw_Capture.h"

#include "wire/Mux_Row_Format.h"

#include <loguru.hpp>

#include <system_error>
#include <utility>

namespace Pelgar::ORBE {

namespace {

constexpr std::size_t most_bytes_a_write = std::size_t{1} << 20U;
constexpr auto shortest_silence = std::chrono::seconds(1);

unsigned long long wide(std::uint64_t number) {
    return number;
}

} // namespace

Raw_Capture::Raw_Capture(std::string name, Capture_File_Factory make_file, std::size_t capacity)
    : m_name(std::move(name)), m_make_file(std::move(make_file)), m_queue(capacity),
      m_thread(&Raw_Capture::run, this) {
    LOG_F(INFO, "Raw capture into %s", m_name.c_str());
}

Raw_Capture::~Raw_Capture() {
    end_run();
    m_queue.close();
    m_thread.join();
}

void Raw_Capture::take(std::span<const std::uint8_t> transfer) {
    if (m_is_running) {
        m_queue.push(transfer.first(transfer.size() - transfer.size() % demux::mux_row::length));
    }
}

void Raw_Capture::end_run() {
    if (m_is_running) {
        m_is_running = false;
        m_queue.end_run();
    }
}

Raw_Capture_State Raw_Capture::state() const {
    Raw_Capture_State state;
    state.is_settled = m_queue.is_empty();
    const Capture_Queue::Losses lost = m_queue.lost();
    state.written = m_written;
    state.lost = lost.bytes + m_given_up;
    state.places = lost.places;
    state.fill = m_queue.fill();
    const std::lock_guard lock(m_problem_mutex);
    state.problem = m_problem;
    return state;
}

void Raw_Capture::run() {
    while (true) {
        const Capture_Queue::Front front = m_queue.wait_front(most_bytes_a_write);
        if (front.bytes.empty() && !front.ends_run) {
            return;
        }
        try {
            if (front.ends_run) {
                finish_run(front.lost);
            } else {
                write(front);
            }
        } catch (const std::system_error& error) {
            give_up(error.what());
            m_given_up.fetch_add(front.bytes.size());
        }
        m_queue.pop(front);
        tell_of_losses(Clock::now());
    }
}

// After a failure what is still queued passes through unwritten.
void Raw_Capture::write(const Capture_Queue::Front& front) {
    const std::size_t bytes = front.bytes.size();
    if (!m_problem.empty()) {
        m_given_up.fetch_add(bytes);
        return;
    }
    if (!m_file) {
        m_file = m_make_file(m_name);
        m_written_in_run = 0;
        LOG_F(INFO, "Raw capture : a run begins in %s", m_file->name().c_str());
    }
    m_file->write(front.bytes);
    m_written_in_run += bytes;
    m_written.fetch_add(bytes);
}

void Raw_Capture::finish_run(const Capture_Queue::Losses& lost) {
    if (!m_file) {
        return;
    }
    m_file->close();
    const std::string name = m_file->name();
    m_file.reset();
    if (lost.bytes == 0) {
        LOG_F(INFO, "Raw capture : %s holds the whole run, %llu bytes", name.c_str(), wide(m_written_in_run));
    } else {
        LOG_F(ERROR, "Raw capture : %s holds %llu bytes of the run, %llu bytes are lost in %llu places",
              name.c_str(), wide(m_written_in_run), wide(lost.bytes), wide(lost.places));
    }
}

// On this thread and not on the pump's, whose log lines would go to the same slow disk.
void Raw_Capture::tell_of_losses(Clock::time_point now) {
    const Capture_Queue::Losses lost = m_queue.lost();
    if (lost.bytes == m_told_lost || !m_problem.empty() || now - m_told_at < shortest_silence) {
        return;
    }
    m_told_lost = lost.bytes;
    m_told_at = now;
    LOG_F(WARNING,
          "Raw capture : the disk is too slow, %llu bytes lost so far in %llu places; the acquisition is not",
          wide(lost.bytes), wide(lost.places));
}

// No further run is captured either: who would look for the reason in the last one's file?
void Raw_Capture::give_up(const std::string& why) {
    if (!m_problem.empty()) {
        return;
    }
    {
        const std::lock_guard lock(m_problem_mutex);
        m_problem = why;
    }
    m_file.reset();
    m_queue.close();
    LOG_F(ERROR, "Raw capture : ends after %llu bytes, %s. The acquisition goes on", wide(m_written),
          why.c_str());
}

} // namespace Pelgar::ORBE
