#include "rows/C_Async_PSB_And_RHD_Demux.h"

#include "common/Checked_Index.h"
#include "common/Console.h"
#include "probe/CP_L1_Whole_Super_Frames.h"
#include "rows/Queue_Sizes.h"
#include "wire/Mux_Row_Format.h"

#include <loguru.hpp>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>

namespace Pelgar::ORBE::demux {

Async_NP_And_RHD_Demux::Async_NP_And_RHD_Demux() : m_queue_memory(default_queue_memory()) {
    LOG_SCOPE_F(INFO, "Async_NP_And_RHD_Demux");
    for (auto& worker : m_np_workers) {
        worker = std::make_unique<C_NP_Worker_Thread>();
    }
    m_rhd_worker = std::make_unique<C_RHD_Worker_Thread>();
    m_row_splitter = std::make_unique<Row_Splitter>(m_np_workers, *m_rhd_worker);
    set_queue_limits();
    // Whatever is in the file stays in it.
    m_raw_data_file.open(raw_data_file_name, std::ios::binary | std::ios::app);
}

Async_NP_And_RHD_Demux::~Async_NP_And_RHD_Demux() {
    LOG_SCOPE_F(INFO, "~Async_NP_And_RHD_Demux");
    m_rhd_worker.reset();
    for (auto& worker : m_np_workers) {
        worker.reset();
    }
}

void Async_NP_And_RHD_Demux::start_worker_threads() {
    LOG_SCOPE_F(INFO, "start_worker_threads");
    if (m_worker_threads_started) {
        return;
    }
    if (m_done || m_threads_have_ended) {
        renew();
    }
    try {
        for (unsigned port = 0; port < np_port_count; ++port) {
            m_np_workers[port]->start("NP" + std::to_string(port));
        }
        m_rhd_worker->start("RHD");
    } catch (const std::system_error&) {
        // A second try starts all of them.
        for (const auto& worker : m_np_workers) {
            worker->end();
        }
        m_threads_have_ended = true;
        throw;
    }
    m_worker_threads_started = true;
}

void Async_NP_And_RHD_Demux::set_block_length(std::uint32_t super_frames) {
    m_row_splitter->set_block_length(super_frames);
    set_queue_limits();
}

void Async_NP_And_RHD_Demux::set_transfer_length(std::uint32_t bytes) {
    m_transfer_length = std::min<std::uint32_t>(bytes, transfer_buffer_capacity);
    set_queue_limits();
}

void Async_NP_And_RHD_Demux::set_queue_memory(std::uint64_t bytes) {
    m_queue_memory = bytes;
    set_queue_limits();
}

void Async_NP_And_RHD_Demux::set_queue_limits() {
    const Queue_Sizes sizes = queue_sizes(m_queue_memory, m_transfer_length, m_row_splitter->block_length());
    m_main_demux_queue.set_limit(sizes.transfers);
    for (const auto& worker : m_np_workers) {
        worker->set_queue_limit(sizes.np_blocks);
    }
    m_rhd_worker->set_queue_limit(sizes.rhd_pieces);
}

void Async_NP_And_RHD_Demux::set_sample_listener(std::weak_ptr<I_Sample_Listener> listener, unsigned port) {
    checked_at(m_np_workers, port)
        ->replace_l1_stage(std::make_unique<CP_L1_Whole_Super_Frames>(std::move(listener)));
}

// Takes back what ended the threads of an earlier run, or of a try to start them.
void Async_NP_And_RHD_Demux::renew() {
    m_stop_requested = false;
    m_done = false;
    m_threads_have_ended = false;
    for (const auto& worker : m_np_workers) {
        worker->renew();
    }
    m_rhd_worker->renew();
}

void Async_NP_And_RHD_Demux::run() {
    LOG_SCOPE_F(INFO, "run");
    while (!m_stop_requested || m_main_demux_queue.size() != 0) {
        process_queue_element();
    }
    wait_worker_threads_end();
    tell_losses();
    m_done.store(true);

    for (unsigned port = 0; port < np_port_count; ++port) {
        LOG_F(INFO, "Number of np %d rows processed : %d", port, m_row_splitter->np_rows(port));
    }
    LOG_F(INFO, "Number of rhd rows processed : %d", m_row_splitter->rhd_rows());
    LOG_F(INFO, "End of main demux thread");
}

void Async_NP_And_RHD_Demux::tell_losses() {
    m_main_demux_queue.tell_loss();
    m_row_splitter->tell_losses();
    m_rhd_worker->tell_loss();
}

// The element stays in the queue while it is read, and for good when its processing throws.
void Async_NP_And_RHD_Demux::process_queue_element() {
    const Main_mux_transfer_buffer_wrapper& record = m_main_demux_queue.wait_front();
    if (const auto loss = Transfer_Queue::loss_in(record)) [[unlikely]] {
        m_row_splitter->skip(*loss);
    } else {
        process_record(record);
    }
    m_main_demux_queue.pop();
}

void Async_NP_And_RHD_Demux::process_record(const Main_mux_transfer_buffer_wrapper& buffer) {
    if (m_processed_packet_count == 0) {
        console::out("Elements in main demux queue: ", m_main_demux_queue.size(),
                     ", packet size : ", buffer.size, '\n');
    }
    ++m_processed_packet_count;
    if (buffer.size == 0) {
        LOG_F(INFO, "Async_PSB_And_RHD_Demux : Poison packet received (m_main_demux_queue)");
        m_stop_requested = true;
    } else {
        process_transfer_buffer(buffer);
    }
}

void Async_NP_And_RHD_Demux::process_transfer_buffer(const Main_mux_transfer_buffer_wrapper& buffer) {
    if (buffer.size < mux_row::length) {
        throw std::runtime_error("Buffer must contain at least 16 byte");
    }
    if (buffer.size % mux_row::length != 0) {
        console::err("Buffer size incompatible\n");
    }
    if (!mux_row::has_marker(buffer.data)) {
        console::out("Async_PSB_And_RHD_Demux : Main mux data invalid, discarding data packet\n");
        return;
    }
    m_row_splitter->split(buffer.data, buffer.size / mux_row::length);
}

void Async_NP_And_RHD_Demux::push_xfer_buffer_to_queue(const Main_mux_transfer_buffer_wrapper& buffer) {
    m_main_demux_queue.push(buffer);
}

void Async_NP_And_RHD_Demux::exchange_xfer_buffer(std::unique_ptr<Main_mux_transfer_buffer_wrapper>& buffer) {
    m_main_demux_queue.exchange(buffer);
}

void Async_NP_And_RHD_Demux::drop_front_xfer_buffer() {
    m_main_demux_queue.pop();
}

void Async_NP_And_RHD_Demux::poison_queue() {
    LOG_SCOPE_F(INFO, "poison_queue");
    auto poison = std::make_unique<Main_mux_transfer_buffer_wrapper>();
    exchange_xfer_buffer(poison);
}

// A transfer leaves the queue when its rows are sorted, a block when it is decoded, an RHD word when the
// frame before it is delivered.
void Async_NP_And_RHD_Demux::wait_until_delivered() {
    m_main_demux_queue.wait_until_consumed();
    for (const auto& worker : m_np_workers) {
        worker->wait_until_decoded();
    }
    m_rhd_worker->wait_until_delivered();
}

void Async_NP_And_RHD_Demux::drop_unfinished_blocks() {
    m_row_splitter->drop_unfinished_blocks();
    m_rhd_worker->drop_unfinished_frame();
}

void Async_NP_And_RHD_Demux::signal_to_resync() {
    LOG_SCOPE_F(INFO, "signal_to_resync");
    for (const auto& worker : m_np_workers) {
        worker->resync();
    }
}

void Async_NP_And_RHD_Demux::set_L2_CH_Results_Listener(std::weak_ptr<I_L2_Demux_CH_Results> listener,
                                                        unsigned int np_index) {
    if (np_index >= np_port_count) {
        throw std::runtime_error(
            "illegal np demux index inside Async_PSB_And_RHD_Demux::set_L2_CH_Results_Listener");
    }
    m_np_workers[np_index]->set_l2_listener(listener);
}

std::weak_ptr<I_L2_Demux_CH_Results>
Async_NP_And_RHD_Demux::get_L2_CH_Results_Listener(unsigned int np_index) const {
    return checked_at(m_np_workers, np_index)->get_l2_listener();
}

void Async_NP_And_RHD_Demux::set_RHD_Results_Listener(std::weak_ptr<I_RHD_Frame_Listener> listener) {
    m_rhd_worker->set_listener(std::move(listener));
}

std::weak_ptr<I_RHD_Frame_Listener> Async_NP_And_RHD_Demux::get_RHD_Results_Listener() const {
    return m_rhd_worker->get_listener();
}

void Async_NP_And_RHD_Demux::set_enabled_RHD_stream_count(unsigned int count) {
    m_rhd_worker->set_enabled_stream_count(count);
}

void Async_NP_And_RHD_Demux::wait_worker_threads_end() {
    if (!m_worker_threads_started) {
        LOG_F(INFO, "m_worker_threads already not started");
        return;
    }
    for (const auto& worker : m_np_workers) {
        worker->poison_queue();
    }
    m_rhd_worker->signal_to_stop();
    m_rhd_worker->push_wake_up_words();

    LOG_F(INFO, "Joining with the threads");
    LOG_F(INFO, "Joining with RHD worker");
    m_rhd_worker->join();
    LOG_F(INFO, "Joining with NP workers");
    for (const auto& worker : m_np_workers) {
        worker->join();
    }
    LOG_F(INFO, "Main demux worker threads done");
    m_worker_threads_started = false;
    m_threads_have_ended = true;
}

std::uint32_t Async_NP_And_RHD_Demux::get_total_processed_SF_count() const {
    std::uint32_t total = 0;
    for (const auto& worker : m_np_workers) {
        total += worker->get_sync_pattern_count();
    }
    return total;
}

std::uint32_t Async_NP_And_RHD_Demux::get_total_processed_RHD_frame_count() const {
    return m_rhd_worker->get_valid_frame_count();
}

Stream_Damage Async_NP_And_RHD_Demux::get_stream_damage(unsigned stream) const {
    Stream_Damage damage;
    damage.row_gaps = m_row_splitter->row_gaps(stream);
    if (stream != mux_row::rhd_stream_id) {
        const C_NP_Worker_Thread& worker = *checked_at(m_np_workers, stream);
        damage.frame_gaps = worker.get_frame_gap_count();
        damage.wrong_tags = worker.get_wrong_tag_count();
    }
    return damage;
}

} // namespace Pelgar::ORBE::demux
