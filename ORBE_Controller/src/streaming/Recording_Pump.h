// Layer: device controller. Plays a recorded raw DMA file into the demultiplexer in the box's place, one
// piece of 1 MiB a call. Opened, paused and resumed on the host's threads; the pump thread pumps, and sleeps
// 10 ms a piece.
#pragma once

#include "common/Relaxed.h"
#include "wire/Main_mux_transfer_buffer_wrapper.h"

#include <fstream>
#include <memory>
#include <string>

namespace Pelgar::ORBE {

namespace demux {
class Async_NP_And_RHD_Demux;
}

class Recording_Pump {
public:
    // `demux` must outlive the object.
    explicit Recording_Pump(demux::Async_NP_And_RHD_Demux& demux) : m_demux(demux) {}

    // False, with a printed text and the reason in the log, when the file cannot be opened.
    bool open(const std::string& path);

    bool is_prepared() const { return m_xfer_buffer != nullptr; }

    // Pushes the next piece, unless paused. False at the end of the file, where a last short piece is left
    // out; the next call begins with the first piece again.
    bool pump();

    void pause() { m_sim_paused = true; }

    void resume() { m_sim_paused = false; }

private:
    demux::Async_NP_And_RHD_Demux& m_demux;
    std::unique_ptr<demux::Main_mux_transfer_buffer_wrapper> m_xfer_buffer;
    Relaxed<bool> m_sim_paused{false};
    std::ifstream m_sim_file;
};

} // namespace Pelgar::ORBE
