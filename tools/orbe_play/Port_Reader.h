// Program orbe-play. Reads the packets of one port through the API and compares them with what the recording
// holds. `run` is the body of the port's reader thread; it returns after closeBS.
#pragma once

#include "Reader_Result.h"

#include <filesystem>

namespace Pelgar::ORBE::recording {

class Port_Reader {
public:
    // `port` is the API's number, 1..4.
    Port_Reader(std::filesystem::path recording, int port, bool verify);

    void run();

    const Reader_Result& result() const { return m_result; }

    int port() const { return m_port; }

private:
    void read_all();

    std::filesystem::path m_recording;
    int m_port;
    bool m_verify;
    Reader_Result m_result;
};

} // namespace Pelgar::ORBE::recording
