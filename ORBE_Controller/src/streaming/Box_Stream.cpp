#include "streaming/Box_Stream.h"

#include "common/Console.h"
#include "connection/Box_Connection.h"
#include "fpga/Okelly_Adapter_Module.h"
#include "ports/Probe_Ports.h"
#include "raw_capture/Capture_File.h"

#include <loguru.hpp>

#include <exception>
#include <set>
#include <stdexcept>
#include <utility>

namespace Pelgar::ORBE {

namespace {

// Written to the TTL outputs on every start of the RHD stream.
constexpr std::uint32_t rhd_start_ttl_pattern = 0x12345678;

} // namespace

Box_Stream::Box_Stream(Box_Connection& box, Probe_Ports& ports)
    : m_box(box), m_ports(ports), m_dma_pump(box, m_entrance), m_recording_pump(m_entrance) {}

void Box_Stream::prepare_for_streaming() {
    LOG_SCOPE_F(INFO, "prepare_for_streaming");
    if (m_prepared_for_streaming) {
        LOG_F(INFO, "Already prepard for streaming");
        return;
    }
    m_dma_pump.allocate_receive_buffer();
    m_demux_thread.start();
    try {
        LOG_F(INFO, "Worker thread started");
        m_dma_pump.prepare();
    } catch (...) {
        // A second try starts a thread of its own.
        m_demux_thread.stop();
        throw;
    }
    m_prepared_for_streaming = true;
}

bool Box_Stream::prepare_for_simulation_streaming(const std::string& path) {
    LOG_SCOPE_F(INFO, "prepare_for_simulation_streaming");
    if (m_prepared_for_streaming) {
        console::out("Alread prepard for streaming (simulation)\n");
        return true;
    }
    if (!m_recording_pump.open(path)) {
        return false;
    }
    m_demux_thread.start();
    console::out("Simulation worker thread started\n");
    m_prepared_for_streaming = true;
    return true;
}

void Box_Stream::set_prompt_delivery(std::uint32_t transfer_bytes, std::uint32_t super_frames) {
    m_dma_pump.set_transfer_size(transfer_bytes);
    m_recording_pump.set_piece_size(transfer_bytes);
    m_demux_thread.demux().set_transfer_length(transfer_bytes);
    m_demux_thread.demux().set_block_length(super_frames);
}

void Box_Stream::set_NP_sample_listener(std::weak_ptr<demux::I_Sample_Listener> listener, unsigned port) {
    m_ports.at(port).gain_filter()->correct_around_middle();
    m_demux_thread.demux().set_sample_listener(std::move(listener), port);
}

void Box_Stream::enable_streaming(bool enable_np, std::initializer_list<unsigned> np_ports, bool enable_rhd,
                                  std::initializer_list<unsigned> rhd_streams, bool soft_trigger) {
    LOG_SCOPE_F(INFO, "enable_streaming");
    if (!m_box.is_simulation()) {
        enable_box_sources(enable_np, np_ports, enable_rhd, rhd_streams, soft_trigger);
    } else if (enable_np || enable_rhd) {
        m_recording_pump.resume();
        console::out("resume streaming (simulation)\n");
    } else {
        console::out("Enable stream incorrect request (simulation)\n");
    }
    m_demux_thread.demux().set_enabled_RHD_stream_count(static_cast<unsigned>(rhd_streams.size()));
    m_streams_enabled = m_streams_enabled || enable_np || enable_rhd;
}

void Box_Stream::enable_box_sources(bool enable_np, std::initializer_list<unsigned> np_ports, bool enable_rhd,
                                    std::initializer_list<unsigned> rhd_streams, bool soft_trigger) {
    if (enable_np) {
        m_demux_thread.demux().signal_to_resync();
        ORBE_Configurator& configurator = m_box.modules().configurator();
        configurator.enable_np_streams(np_ports);
        if (soft_trigger) {
            configurator.soft_trigger_pulse();
        }
    }
    if (enable_rhd) {
        Okelly_Adapter_Module& rhd = m_box.modules().okelly_adapter();
        rhd.set_continous_mode(true);
        rhd.enable_streams(std::set<unsigned>(rhd_streams));
        rhd.set_ttl_out_value(rhd_start_ttl_pattern);
        rhd.trigger_fsm();
    }
}

void Box_Stream::disable_streaming() {
    LOG_SCOPE_F(INFO, "disable_streaming");
    m_streams_enabled = false;
    if (m_box.is_simulation()) {
        console::out("disable_streaming in simulation mode\n");
        console::out("pause streaming (simulation)\n");
        m_recording_pump.pause();
        return;
    }
    if (!may_stop_sources()) {
        LOG_F(WARNING, "Skipping commands for disabling streams ( m_current_error_level > 0 )");
        return;
    }
    m_box.modules().configurator().enable_np_streams({});
    m_box.modules().okelly_adapter().enable_streams({});
}

bool Box_Stream::may_stop_sources() const {
    return m_box.is_healthy() || (m_stops_despite_errors && m_box.error_level() != Error_Level::driver_open);
}

void Box_Stream::disable_data_sources() {
    LOG_SCOPE_F(INFO, "disable_data_sources");
    if (may_stop_sources()) {
        m_box.modules().data_stream().disable_data_source();
        m_box.modules().okelly_adapter().set_continous_mode(false);
    }
}

void Box_Stream::capture_raw_data(const std::string& path) {
    m_raw_capture = std::make_unique<Raw_Capture>(
        path, [](const std::string& name) { return std::make_unique<Capture_File>(name); });
    m_entrance.set_capture(m_raw_capture.get());
}

void Box_Stream::begin_raw_capture() {
    if (m_raw_capture) {
        m_raw_capture->begin_run();
    }
}

void Box_Stream::end_raw_capture() {
    if (m_raw_capture) {
        m_raw_capture->end_run();
    }
}

std::optional<Raw_Capture_State> Box_Stream::raw_capture_state() const {
    return m_raw_capture ? std::optional(m_raw_capture->state()) : std::nullopt;
}

bool Box_Stream::pump_data_to_demux() {
    const bool simulation = m_box.is_simulation();
    const bool pump_is_prepared = simulation ? m_recording_pump.is_prepared() : m_dma_pump.is_prepared();
    if (!m_prepared_for_streaming || !pump_is_prepared) {
        LOG_F(ERROR, "pump_data_to_demux before streaming was prepared");
        return false;
    }
    return simulation ? m_recording_pump.pump() : m_dma_pump.pump();
}

void Box_Stream::set_NP_aqustion_listener(std::weak_ptr<demux::I_L2_Demux_CH_Results> listener, unsigned port,
                                          bool via_gain_filter) {
    LOG_SCOPE_F(INFO, "set_NP_aqustion_listener");
    if (via_gain_filter) {
        if (!m_ports.is_made(port)) {
            throw std::runtime_error("set_NP_aqustion_listener before pre_init");
        }
        const auto& filter = m_ports.at(port).gain_filter();
        filter->set_listener(std::move(listener));
        listener = filter;
    }
    m_demux_thread.demux().set_L2_CH_Results_Listener(std::move(listener), port);
}

void Box_Stream::set_RHD_aqustion_listener(std::weak_ptr<demux::I_RHD_Frame_Listener> listener) {
    LOG_SCOPE_F(INFO, "set_RHD_aqustion_listener");
    m_demux_thread.demux().set_RHD_Results_Listener(std::move(listener));
}

void Box_Stream::finalize_stream() {
    LOG_SCOPE_F(INFO, "finalize_stream");
    std::exception_ptr failure;
    if (may_stop_sources()) {
        try {
            disable_data_sources();
            LOG_F(INFO, "Purge on exit disabled");
        } catch (...) {
            // The threads are joined whatever the registers do.
            failure = std::current_exception();
        }
    }
    m_demux_thread.stop();
    demux::Async_NP_And_RHD_Demux& demux = m_demux_thread.demux();
    LOG_F(INFO, "Read issue counter : %d", m_dma_pump.read_count());
    LOG_F(INFO, "Total processed SF counter : %d", demux.get_total_processed_SF_count());
    LOG_F(INFO, "Total processed RHD frames : %d", demux.get_total_processed_RHD_frame_count());
    if (failure) {
        std::rethrow_exception(failure);
    }
}

} // namespace Pelgar::ORBE
