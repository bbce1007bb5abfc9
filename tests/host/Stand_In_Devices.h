// Test support, Linux. A folder of files that take the place of the XDMA driver's devices: a regular file for
// the registers of a box with four locked ports, a FIFO for its stream. Objects live on the test's thread.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

namespace Pelgar::ORBE::test {

class Stand_In_Devices {
public:
    // Makes the devices of "xdma0" in a folder that exists. Throws std::system_error.
    explicit Stand_In_Devices(const std::filesystem::path& folder);
    ~Stand_In_Devices();
    Stand_In_Devices(const Stand_In_Devices&) = delete;
    Stand_In_Devices& operator=(const Stand_In_Devices&) = delete;

    // A thread of its own feeds the bytes of the recording into the stream, as fast as they are read. Behind
    // their end nothing comes until the streams are switched off, and zeros from then on, so that a reader
    // that waits for a full buffer gets away. Once more: from the beginning, with nothing left of what was
    // before; while nobody reads.
    void play(const std::filesystem::path& recording);

private:
    void end_feeding();
    void empty_stream() const;
    bool streams_are_on() const;
    bool feed(const std::uint8_t* bytes, std::size_t size) const;
    void feed_recording();

    volatile std::uint32_t* m_registers = nullptr;
    int m_stream = -1; // both ends of the FIFO, so that it never breaks
    std::vector<std::uint8_t> m_recording;
    std::atomic<bool> m_leaving{false};
    std::thread m_feeder;
};

} // namespace Pelgar::ORBE::test
