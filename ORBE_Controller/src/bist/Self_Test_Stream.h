// Layer: device controller, self tests. Lends the controller's stream to a self test: listeners of its own
// for as long as the object lives, and the host's ones back afterwards, whatever happens in between. Used on
// the thread that runs the test, which pumps.
#pragma once

#include "probe/CP_L2_CH_Results_Null_Writer.h"
#include "probe/I_L2_Demux_CH_Results.h"
#include "rhd/RHD_Frame_Null_listener.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace Pelgar::ORBE {

class Box_Connection;
class Box_Stream;

class Self_Test_Stream {
public:
    // Clears the data path of what an earlier acquisition has left, saves the listeners, and sets `listener`
    // for the port and ones that do nothing for the others and for the RHD stream.
    Self_Test_Stream(const Box_Connection& box, Box_Stream& stream, unsigned port,
                     const std::shared_ptr<demux::I_L2_Demux_CH_Results>& listener);

    // Stops the stream and gives the listeners back if that has not been done.
    ~Self_Test_Stream();
    Self_Test_Stream(const Self_Test_Stream&) = delete;
    Self_Test_Stream& operator=(const Self_Test_Stream&) = delete;

    // Prepares streaming, in simulation mode from a recording. A stream that is prepared already is taken as
    // it is. False when the recording cannot be opened.
    bool prepare(const std::string& recording);

    // Starts the port's rows.
    void enable();

    // Moves one buffer, and returns its bytes when all that it completes has reached the listeners. Nothing
    // when there is no more.
    std::optional<std::uint32_t> pump();

    // Stops the rows, and returns when the listeners have what was pumped. What does not fill a block, or an
    // RHD frame, is dropped, so that none of it is taken for a later acquisition.
    void stop();

    // Puts the saved listeners back.
    void restore_listeners();

private:
    const Box_Connection& m_box;
    Box_Stream& m_stream;
    unsigned m_port;
    std::shared_ptr<demux::CP_L2_CH_Results_Null_Writer> m_null_writer;
    std::shared_ptr<demux::RHD_Frame_Null_listener> m_rhd_null_listener;
    bool m_prepared = false;
    bool m_restored = false;
};

} // namespace Pelgar::ORBE
