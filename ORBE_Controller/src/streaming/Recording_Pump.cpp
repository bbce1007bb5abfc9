#include "streaming/Recording_Pump.h"

#include "common/Console.h"
#include "common/Host_Path.h"
#include "common/Waiting.h"
#include "streaming/Demux_Entrance.h"
#include "wire/Mux_Row_Format.h"

#include <loguru.hpp>

#include <algorithm>
#include <chrono>
#include <cstddef>

namespace Pelgar::ORBE {

namespace {

using namespace std::chrono_literals;

constexpr auto simulation_pump_wait = 10ms;

} // namespace

bool Recording_Pump::open(const std::string& path) {
    if (!opens_as_directory(path.c_str())) {
        m_sim_file.open(path, std::ios::binary);
    }
    if (!m_sim_file.is_open()) {
        console::out("Sim file open error : ", path);
        LOG_F(ERROR, "Recording cannot be opened, %s: %s", why_unreadable(path.c_str()).c_str(),
              path.c_str());
        return false;
    }
    console::out("Sim file opened : ", path, "\n");
    m_xfer_buffer = std::make_unique<demux::Main_mux_transfer_buffer_wrapper>();
    return true;
}

void Recording_Pump::set_piece_size(std::uint32_t bytes) {
    m_piece_size = std::min<std::uint32_t>(bytes, demux::transfer_buffer_capacity);
}

void Recording_Pump::play_from_beginning_in_real_time() {
    m_sim_file.clear();
    m_sim_file.seekg(0);
    m_pace.emplace();
}

// The last piece is shorter, since a recording ends anywhere.
bool Recording_Pump::play_piece() {
    m_sim_file.read(reinterpret_cast<char*>(m_xfer_buffer->data), m_piece_size);
    const auto read = static_cast<std::size_t>(m_sim_file.gcount());
    const std::size_t bytes = read - read % demux::mux_row::length;
    if (bytes == 0) {
        return false;
    }
    m_pace->wait_until_due({m_xfer_buffer->data, bytes});
    m_xfer_buffer->size = static_cast<std::uint32_t>(bytes);
    if (!m_sim_paused) {
        m_demux.exchange_xfer_buffer(m_xfer_buffer);
    }
    return true;
}

bool Recording_Pump::pump() {
    if (m_pace) {
        return play_piece();
    }
    m_sim_file.read(reinterpret_cast<char*>(m_xfer_buffer->data), demux::transfer_buffer_capacity);
    if (!m_sim_file) {
        m_sim_file.clear();
        m_sim_file.seekg(0);
        return false;
    }
    m_xfer_buffer->size = demux::transfer_buffer_capacity;
    if (!m_sim_paused) {
        m_demux.exchange_xfer_buffer(m_xfer_buffer);
    }
    wait_for(simulation_pump_wait);
    return true;
}

} // namespace Pelgar::ORBE
