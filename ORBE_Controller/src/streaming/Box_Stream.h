// Layer: device controller. The data stream of a box, or of the recording that plays one: data sources,
// buffers, the demultiplexer and the pump. Operations run on the host's threads, `pump_data_to_demux` on the
// pump thread.
#pragma once

#include "common/Relaxed.h"
#include "probe/I_Sample_Listener.h"
#include "raw_capture/Raw_Capture.h"
#include "streaming/DMA_Pump.h"
#include "streaming/Demux_Entrance.h"
#include "streaming/Demux_Thread.h"
#include "streaming/Recording_Pump.h"
#include "streaming/Saved_Listeners.h"

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>

namespace Pelgar::ORBE {

class Box_Connection;
class Probe_Ports;

class Box_Stream {
public:
    // Both must outlive the object.
    Box_Stream(Box_Connection& box, Probe_Ports& ports);

    // What these do is said with the operations of the same names in `ORBE_Controller_Library`.
    void prepare_for_streaming();
    bool prepare_for_simulation_streaming(const std::string& path);
    void set_prompt_delivery(std::uint32_t transfer_bytes, std::uint32_t super_frames);
    void set_NP_sample_listener(std::weak_ptr<demux::I_Sample_Listener> listener, unsigned port);

    void set_stopping_despite_errors(bool stops) { m_stops_despite_errors = stops; }

    void play_from_beginning_in_real_time() { m_recording_pump.play_from_beginning_in_real_time(); }

    void enable_streaming(bool enable_np, std::initializer_list<unsigned> np_ports, bool enable_rhd,
                          std::initializer_list<unsigned> rhd_streams, bool soft_trigger);
    void disable_streaming();
    void disable_data_sources();

    // Whether sources have been switched on and not off since.
    bool is_enabled() const { return m_streams_enabled; }

    bool pump_data_to_demux();

    void capture_raw_data(const std::string& path);
    void begin_raw_capture();
    void end_raw_capture();
    std::optional<Raw_Capture_State> raw_capture_state() const;

    std::uint32_t get_total_bytes_read() const { return m_dma_pump.total_bytes_read(); }

    demux::Stream_Damage get_stream_damage(unsigned stream) const {
        return m_demux_thread.demux().get_stream_damage(stream);
    }

    void wait_until_delivered() { m_demux_thread.wait_until_delivered(); }

    void drop_unfinished_blocks() { m_demux_thread.demux().drop_unfinished_blocks(); }

    void set_NP_aqustion_listener(std::weak_ptr<demux::I_L2_Demux_CH_Results> listener, unsigned port,
                                  bool via_gain_filter);
    void set_RHD_aqustion_listener(std::weak_ptr<demux::I_RHD_Frame_Listener> listener);

    void save_stream_listeners() { m_saved_listeners.save(m_demux_thread.demux()); }

    void restore_stream_listeners() { m_saved_listeners.restore(m_demux_thread.demux()); }

    void finalize_stream();

    // See `DMA_Pump`.
    void purge_read_buffers() { m_dma_pump.purge_read_buffers(); }

private:
    bool may_stop_sources() const;
    void enable_box_sources(bool enable_np, std::initializer_list<unsigned> np_ports, bool enable_rhd,
                            std::initializer_list<unsigned> rhd_streams, bool soft_trigger);

    Box_Connection& m_box;
    Probe_Ports& m_ports;
    Demux_Thread m_demux_thread;
    std::unique_ptr<Raw_Capture> m_raw_capture;
    Demux_Entrance m_entrance{m_demux_thread.demux()};
    DMA_Pump m_dma_pump;
    Recording_Pump m_recording_pump;
    Saved_Listeners m_saved_listeners;
    bool m_stops_despite_errors = false;
    bool m_prepared_for_streaming = false;
    Relaxed<bool> m_streams_enabled{false};
};

} // namespace Pelgar::ORBE
