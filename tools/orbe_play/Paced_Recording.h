// Program orbe-play. Plays a recording through a pipe instead of from the file: the next piece follows when
// the packets of the pieces before it have been taken, so that nothing overflows on a machine that is too
// busy to play in real time. The library cannot tell the pipe from a file. Has a thread of its own.
#pragma once

#include "expectation/Packet_Counts.h"

#include <atomic>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>

namespace Pelgar::ORBE::recording {

class Paced_Recording {
public:
    // Makes the pipe at `pipe`; from then on the library can open it. Throws std::runtime_error when that
    // cannot be done.
    Paced_Recording(std::filesystem::path recording, std::filesystem::path pipe);
    // Stops.
    ~Paced_Recording();
    Paced_Recording(const Paced_Recording&) = delete;
    Paced_Recording& operator=(const Paced_Recording&) = delete;

    const std::filesystem::path& pipe() const { return m_pipe; }

    // Starts to write pieces. `taken` says, on the writing thread, whether the packets counted so far have
    // been taken.
    void start(std::function<bool(const Packet_Counts&)> taken);

    // Ends the recording where it is: the library then finds the end of its file. To be called before
    // closeBS.
    void stop();

private:
    void write_all();
    bool write(std::span<const std::uint8_t> piece) const;

    std::filesystem::path m_recording;
    std::filesystem::path m_pipe;
    int m_descriptor;
    std::function<bool(const Packet_Counts&)> m_taken;
    std::atomic<bool> m_stop{false};
    std::thread m_writer;
};

} // namespace Pelgar::ORBE::recording
