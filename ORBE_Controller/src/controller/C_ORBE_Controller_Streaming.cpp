// The streaming half of the controller: data sources, buffers, the demultiplexer's main thread and the pump.
#include "controller/C_ORBE_Controller_Library.h"

#include "common/Checked_Index.h"
#include "common/Console.h"
#include "common/Host_Path.h"
#include "common/Waiting.h"

#include <loguru.hpp>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <exception>
#include <set>
#include <stdexcept>
#include <utility>

namespace Pelgar::ORBE {

namespace {

using namespace std::chrono_literals;

constexpr auto demux_end_poll_wait = 1000ms;
constexpr auto simulation_pump_wait = 10ms;

// Written to the TTL outputs on every start of the RHD stream.
constexpr std::uint32_t rhd_start_ttl_pattern = 0x12345678;

} // namespace

void ORBE_Controller_Library::prepare_for_streaming() {
    LOG_SCOPE_F(INFO, "prepare_for_streaming");
    if (m_prepared_for_streaming) {
        LOG_F(INFO, "Already prepard for streaming");
        return;
    }
    LOG_F(INFO, "m_page_aligned_recv_buffer_size = %d", m_page_aligned_recv_buffer_size);
    m_page_aligned_recv_buffer = make_page_aligned_buffer(m_page_aligned_recv_buffer_size);
    start_main_demux_thread();
    try {
        LOG_F(INFO, "Worker thread started");
        m_controller->data_stream().prepare_buffer_for_hw_read(m_page_aligned_recv_buffer.get(),
                                                               m_page_aligned_recv_buffer_size);
        allocate_transfer_buffer();
    } catch (...) {
        // A second try starts a thread of its own.
        stop_main_demux_thread();
        throw;
    }
    m_prepared_for_streaming = true;
}

bool ORBE_Controller_Library::prepare_for_simulation_streaming(const std::string& path) {
    LOG_SCOPE_F(INFO, "prepare_for_simulation_streaming");
    if (m_prepared_for_streaming) {
        console::out("Alread prepard for streaming (simulation)\n");
        return true;
    }
    if (!opens_as_directory(path.c_str())) {
        m_sim_file.open(path, std::ios::binary);
    }
    if (!m_sim_file.is_open()) {
        console::out("Sim file open error : ", path);
        return false;
    }
    console::out("Sim file opened : ", path, "\n");
    allocate_transfer_buffer();
    start_main_demux_thread();
    console::out("Simulation worker thread started\n");
    m_prepared_for_streaming = true;
    return true;
}

void ORBE_Controller_Library::allocate_transfer_buffer() {
    m_xfer_buffer = std::make_unique<demux::Main_mux_transfer_buffer_wrapper>();
}

void ORBE_Controller_Library::start_main_demux_thread() {
    m_demux.start_worker_threads();
    m_demux.signal_to_resync();
    try {
        m_main_demux_thread = std::thread(&ORBE_Controller_Library::run_main_demux, this);
    } catch (const std::system_error&) {
        m_demux.wait_worker_threads_end();
        throw;
    }
    m_main_demux_thread_started = true;
}

void ORBE_Controller_Library::run_main_demux() {
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

void ORBE_Controller_Library::enable_streaming(bool enable_np, std::initializer_list<unsigned> np_ports,
                                               bool enable_rhd, std::initializer_list<unsigned> rhd_streams,
                                               bool soft_trigger) {
    LOG_SCOPE_F(INFO, "enable_streaming");
    if (m_simulation_mode) {
        if (enable_np || enable_rhd) {
            m_sim_paused = false;
            console::out("resume streaming (simulation)\n");
        } else {
            console::out("Enable stream incorrect request (simulation)\n");
        }
    } else {
        if (enable_np) {
            m_demux.signal_to_resync();
            m_controller->configurator().enable_np_streams(np_ports);
            if (soft_trigger) {
                send_soft_trigger();
            }
        }
        if (enable_rhd) {
            Okelly_Adapter_Module& rhd = m_controller->okelly_adapter();
            rhd.set_continous_mode(true);
            rhd.enable_streams(std::set<unsigned>(rhd_streams));
            rhd.set_ttl_out_value(rhd_start_ttl_pattern);
            rhd.trigger_fsm();
        }
    }
    m_demux.set_enabled_RHD_stream_count(static_cast<unsigned>(rhd_streams.size()));
    m_streams_enabled = m_streams_enabled || enable_np || enable_rhd;
}

void ORBE_Controller_Library::disable_streaming() {
    LOG_SCOPE_F(INFO, "disable_streaming");
    m_streams_enabled = false;
    if (m_simulation_mode) {
        console::out("disable_streaming in simulation mode\n");
        console::out("pause streaming (simulation)\n");
        m_sim_paused = true;
        return;
    }
    if (!is_healthy()) {
        LOG_F(WARNING, "Skipping commands for disabling streams ( m_current_error_level > 0 )");
        return;
    }
    m_controller->configurator().enable_np_streams({});
    m_controller->okelly_adapter().enable_streams({});
}

void ORBE_Controller_Library::disable_data_sources() {
    LOG_SCOPE_F(INFO, "disable_data_sources");
    if (is_healthy()) {
        m_controller->data_stream().disable_data_source();
        m_controller->okelly_adapter().set_continous_mode(false);
    }
}

bool ORBE_Controller_Library::pump_data_to_demux() {
    if (!m_prepared_for_streaming) {
        LOG_F(ERROR, "pump_data_to_demux before streaming was prepared");
        return false;
    }
    return m_simulation_mode ? pump_simulation_data_to_demux() : pump_hw_data_to_demux();
}

bool ORBE_Controller_Library::pump_hw_data_to_demux() {
    try {
        const unsigned count = m_controller->data_stream().read(m_page_aligned_recv_buffer.get(),
                                                                m_page_aligned_recv_buffer_size, true);
        if (count != m_page_aligned_recv_buffer_size) {
            console::out("R:", count, " byte read from device\n");
        }
        if (++m_pump_print_counter == 0) {
            console::out("A:", count, " byte read from device\n");
        }
        const std::uint32_t valid = std::min<std::uint32_t>(count, m_page_aligned_recv_buffer_size);
        if (valid > 0) {
            std::memcpy(m_xfer_buffer->data, m_page_aligned_recv_buffer.get(), valid);
            m_xfer_buffer->size = valid;
            m_demux.push_xfer_buffer_to_queue(*m_xfer_buffer);
        }
        ++m_read_counter;
        m_total_bytes_read.fetch_add(valid);
        return true;
    } catch (const std::exception& exception) {
        LOG_F(WARNING, "pump_hw_data_to_demux exception catched : %s", exception.what());
        set_error_level(Error_Level::dma_pump);
        return false;
    }
}

bool ORBE_Controller_Library::pump_simulation_data_to_demux() {
    m_sim_file.read(reinterpret_cast<char*>(m_xfer_buffer->data), demux::transfer_buffer_capacity);
    if (!m_sim_file) {
        m_sim_file.clear();
        m_sim_file.seekg(0);
        return false;
    }
    m_xfer_buffer->size = demux::transfer_buffer_capacity;
    if (!m_sim_paused) {
        m_demux.push_xfer_buffer_to_queue(*m_xfer_buffer);
    }
    wait_for(simulation_pump_wait);
    return true;
}

void ORBE_Controller_Library::wait_until_delivered() {
    if (m_main_demux_thread_started) {
        m_demux.wait_until_delivered();
    }
}

void ORBE_Controller_Library::drop_unfinished_blocks() {
    m_demux.drop_unfinished_blocks();
}

void ORBE_Controller_Library::send_soft_trigger() {
    m_controller->configurator().soft_trigger_pulse();
}

void ORBE_Controller_Library::set_hw_trigger_ttl_source(unsigned char index) {
    m_controller->configurator().set_hw_trigger_ttl_source(index);
}

void ORBE_Controller_Library::set_ttl_out(unsigned value) {
    m_controller->okelly_adapter().set_ttl_out_value(value);
}

unsigned ORBE_Controller_Library::get_ttl_in() {
    return m_controller->okelly_adapter().get_ttl_in_value();
}

void ORBE_Controller_Library::set_NP_aqustion_listener(std::weak_ptr<demux::I_L2_Demux_CH_Results> listener,
                                                       unsigned port, bool via_gain_filter) {
    LOG_SCOPE_F(INFO, "set_NP_aqustion_listener");
    if (!via_gain_filter) {
        m_demux.set_L2_CH_Results_Listener(std::move(listener), port);
        return;
    }
    const auto& filter = checked_at(m_gain_filters, port);
    if (!filter) {
        throw std::runtime_error("set_NP_aqustion_listener before pre_init");
    }
    filter->set_listener(std::move(listener));
    m_demux.set_L2_CH_Results_Listener(filter, port);
}

void ORBE_Controller_Library::set_RHD_aqustion_listener(std::weak_ptr<demux::I_RHD_Frame_Listener> listener) {
    LOG_SCOPE_F(INFO, "set_RHD_aqustion_listener");
    m_demux.set_RHD_Results_Listener(std::move(listener));
}

void ORBE_Controller_Library::save_stream_listeners() {
    console::out("Saving stream listeners\n");
    for (unsigned port = 0; port < port_count; ++port) {
        m_saved_np_listeners[port] = m_demux.get_L2_CH_Results_Listener(port);
    }
    m_saved_rhd_listener = m_demux.get_RHD_Results_Listener();
}

void ORBE_Controller_Library::restore_stream_listeners() {
    console::out("Restoring stream listeners\n");
    for (unsigned port = 0; port < port_count; ++port) {
        m_demux.set_L2_CH_Results_Listener(m_saved_np_listeners[port], port);
    }
    m_demux.set_RHD_Results_Listener(m_saved_rhd_listener);
}

void ORBE_Controller_Library::finalize_stream() {
    LOG_SCOPE_F(INFO, "finalize_stream");
    std::exception_ptr failure;
    if (is_healthy()) {
        try {
            disable_data_sources();
            LOG_F(INFO, "Purge on exit disabled");
        } catch (...) {
            // The threads are joined whatever the registers do.
            failure = std::current_exception();
        }
    }
    stop_main_demux_thread();
    LOG_F(INFO, "Read issue counter : %d", m_read_counter);
    LOG_F(INFO, "Total processed SF counter : %d", m_demux.get_total_processed_SF_count());
    LOG_F(INFO, "Total processed RHD frames : %d", m_demux.get_total_processed_RHD_frame_count());
    if (failure) {
        std::rethrow_exception(failure);
    }
}

void ORBE_Controller_Library::purge_read_buffers() {
    if (!is_healthy()) {
        LOG_F(INFO, "m_current_error_level != 0");
    }
    try {
        const unsigned count = m_controller->data_stream().read(m_page_aligned_recv_buffer.get(),
                                                                m_page_aligned_recv_buffer_size, false);
        LOG_F(INFO, " %d bytes purged", count);
    } catch (const std::exception& exception) {
        LOG_F(WARNING, "purge_read_buffers exception catched : %s", exception.what());
    }
    m_page_aligned_recv_buffer.reset();
}

void ORBE_Controller_Library::stop_main_demux_thread() {
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

} // namespace Pelgar::ORBE
