// Layer: device controller. Plays a recorded raw DMA file into the demultiplexer in the box's place, one
// piece of 1 MiB a call. Opened, paused and resumed on the host's threads; the pump thread pumps, and sleeps
// 10 ms a piece.
#pragma once

#include "common/Relaxed.h"
#include "streaming/Recording_Pace.h"
#include "wire/Main_mux_transfer_buffer_wrapper.h"

#include <cstdint>
#include <fstream>
#include <memory>
#include <optional>
#include <string>

namespace Pelgar::ORBE {

class Demux_Entrance;

class Recording_Pump {
public:
    // `demux` must outlive the object.
    explicit Recording_Pump(Demux_Entrance& demux) : m_demux(demux) {}

    // False, with a printed text and the reason in the log, when the file cannot be opened.
    bool open(const std::string& path);

    bool is_prepared() const { return m_xfer_buffer != nullptr; }

    // The length of a piece that is played in real time, at most 1 MiB.
    void set_piece_size(std::uint32_t bytes);

    // From now on the recording is played from its beginning, and as fast as the box made it, to its last
    // whole row. Not while another thread pumps.
    void play_from_beginning_in_real_time();

    // Pushes the next piece, unless paused. False at the end of the file, where a last short piece is left
    // out; the next call begins with the first piece again.
    bool pump();

    void pause() { m_sim_paused = true; }

    void resume() { m_sim_paused = false; }

private:
    bool play_piece();

    Demux_Entrance& m_demux;
    std::unique_ptr<demux::Main_mux_transfer_buffer_wrapper> m_xfer_buffer;
    Relaxed<bool> m_sim_paused{false};
    std::ifstream m_sim_file;
    std::uint32_t m_piece_size = demux::transfer_buffer_capacity;
    std::optional<Recording_Pace> m_pace; // empty: as fast as the fixed sleep allows
};

} // namespace Pelgar::ORBE
