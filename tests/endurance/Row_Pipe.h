// Endurance test. A recording without an end: a named pipe in the place of the file, into which a thread
// writes rows for as long as the object lives.
#pragma once

#include "Endless_Rows.h"

#include <atomic>
#include <cstdint>
#include <string>
#include <thread>

namespace Pelgar::ORBE::test {

class Row_Pipe {
public:
    // Throws std::system_error when the pipe cannot be made.
    Row_Pipe(std::string path, const Endless_Options& options, const Stream_Enables& enables);
    ~Row_Pipe();
    Row_Pipe(const Row_Pipe&) = delete;
    Row_Pipe& operator=(const Row_Pipe&) = delete;

private:
    void run();

    std::string m_path;
    int m_descriptor = -1;
    Stream_Enables m_enables;
    Endless_Rows m_rows;
    std::atomic<bool> m_ending{false};
    std::thread m_thread; // the last, since it uses the others
};

} // namespace Pelgar::ORBE::test
