// Test support. The files of a host's run for a test, in its working directory: the recording by its
// path, the expectation in memory. And a result in words, for what a failing test says.
#pragma once

#include "Host_Road.h"
#include "Host_Road_Data.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <vector>

namespace Pelgar::ORBE::host {

inline bool operator==(const Host_Road_Result& left, const Host_Road_Result& right) {
    return left.step == right.step && left.port == right.port && left.packet == right.packet &&
           left.byte == right.byte;
}

inline std::ostream& operator<<(std::ostream& stream, const Host_Road_Result& result) {
    return stream << "step " << static_cast<int>(result.step) << ", port " << result.port << ", packet "
                  << result.packet << ", byte " << result.byte;
}

class Host_Road_Files {
public:
    Host_Road_Files() {
        const std::filesystem::path path = "expectation.bin";
        make_host_road_data(m_recording, path);
        m_expectation.resize(std::filesystem::file_size(path) / sizeof(std::uint64_t));
        std::ifstream(path, std::ios::binary)
            .read(reinterpret_cast<char*>(m_expectation.data()), static_cast<std::streamsize>(size()));
    }

    const std::filesystem::path& recording() const { return m_recording; }

    // May be changed, to see that the run notices.
    std::uint8_t* expectation() { return reinterpret_cast<std::uint8_t*>(m_expectation.data()); }

    std::size_t size() const { return m_expectation.size() * sizeof(std::uint64_t); }

    Host_Road_Result run(Host_Road_End end) const { return run_host_road(m_expectation.data(), size(), end); }

private:
    std::filesystem::path m_recording = std::filesystem::absolute("recording.bin");
    std::vector<std::uint64_t> m_expectation;
};

} // namespace Pelgar::ORBE::host
