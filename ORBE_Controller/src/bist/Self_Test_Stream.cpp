#include "bist/Self_Test_Stream.h"

#include "connection/Box_Connection.h"
#include "streaming/Box_Stream.h"
#include "wire/Main_mux_transfer_buffer_wrapper.h"
#include "wire/Mux_Row_Format.h"

#include <loguru.hpp>

#include <exception>

namespace Pelgar::ORBE {

Self_Test_Stream::Self_Test_Stream(const Box_Connection& box, Box_Stream& stream, unsigned port,
                                   const std::shared_ptr<demux::I_L2_Demux_CH_Results>& listener)
    : m_box(box), m_stream(stream), m_port(port),
      m_null_writer(std::make_shared<demux::CP_L2_CH_Results_Null_Writer>()),
      m_rhd_null_listener(std::make_shared<demux::RHD_Frame_Null_listener>()) {
    // What an acquisition has left is neither for the test nor in its way.
    m_stream.wait_until_delivered();
    m_stream.drop_unfinished_blocks();
    m_stream.save_stream_listeners();
    for (unsigned other = 0; other < demux::np_port_count; ++other) {
        m_stream.set_NP_aqustion_listener(m_null_writer, other, false);
    }
    m_stream.set_NP_aqustion_listener(listener, m_port, false);
    // Once started, the box's RHD interface sends frames for as long as the basestation is open.
    m_stream.set_RHD_aqustion_listener(m_rhd_null_listener);
}

Self_Test_Stream::~Self_Test_Stream() {
    const auto attempt = [this](void (Self_Test_Stream::*step)()) {
        try {
            (this->*step)();
        } catch (const std::exception& exception) {
            LOG_F(ERROR, "a self test's stream cannot be given back : %s", exception.what());
        }
    };
    if (m_prepared) {
        attempt(&Self_Test_Stream::stop);
    }
    if (!m_restored) {
        attempt(&Self_Test_Stream::restore_listeners);
    }
}

bool Self_Test_Stream::prepare(const std::string& recording) {
    // Also what fails half-way is stopped again.
    m_prepared = true;
    if (!m_box.is_simulation()) {
        m_stream.prepare_for_streaming();
    } else if (!m_stream.prepare_for_simulation_streaming(recording)) {
        m_prepared = false;
    }
    return m_prepared;
}

void Self_Test_Stream::enable() {
    m_stream.enable_streaming(true, {m_port}, false, {}, true);
}

std::optional<std::uint32_t> Self_Test_Stream::pump() {
    const std::uint32_t before = m_stream.get_total_bytes_read();
    const bool pumped = m_stream.pump_data_to_demux();
    m_stream.wait_until_delivered();
    if (!pumped) {
        return std::nullopt;
    }
    // A recording comes in whole pieces.
    return m_box.is_simulation() ? demux::transfer_buffer_capacity : m_stream.get_total_bytes_read() - before;
}

void Self_Test_Stream::stop() {
    m_prepared = false;
    m_stream.disable_streaming();
    m_stream.wait_until_delivered();
    m_stream.drop_unfinished_blocks();
}

void Self_Test_Stream::restore_listeners() {
    m_restored = true;
    m_stream.restore_stream_listeners();
}

} // namespace Pelgar::ORBE
