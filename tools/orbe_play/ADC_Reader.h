// Program orbe-play. Reads the ADC packets of the RHD headstage through the API and compares them with what
// the recording holds. `run` is the body of the reader thread; it returns after closeBS.
#pragma once

#include "Reader_Result.h"

#include <filesystem>

namespace Pelgar::ORBE::recording {

class ADC_Reader {
public:
    ADC_Reader(std::filesystem::path recording, bool verify);

    void run();

    const Reader_Result& result() const { return m_result; }

private:
    void read_all();

    std::filesystem::path m_recording;
    bool m_verify;
    Reader_Result m_result;
};

} // namespace Pelgar::ORBE::recording
