// Program orbe-play. Plays a recording through the API, as a host does: one basestation, a reader thread for
// each port and one for the ADC packets. Works on the caller's thread until everything has come or nothing
// comes any more.
#pragma once

#include "ADC_Reader.h"
#include "Port_Reader.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace Pelgar::ORBE::recording {

struct Play_Options {
    std::filesystem::path recording; // absolute
    bool verify = false;
    std::chrono::duration<double> stall_limit{10.0};
};

class Player {
public:
    explicit Player(Play_Options options);
    ~Player();
    Player(const Player&) = delete;
    Player& operator=(const Player&) = delete;

    // Plays the whole recording in the current working directory, which names it. Progress is drawn on
    // `progress_descriptor` when that is a terminal. Answers false when the basestation cannot be opened, the
    // packets stop coming or the user stops the program; `problem` then says what happened.
    bool play(int progress_descriptor);

    const std::string& problem() const { return m_problem; }

    const std::vector<std::unique_ptr<Port_Reader>>& ports() const { return m_ports; }

    const ADC_Reader& adc() const { return m_adc; }

    // From the start of the acquisition to the last packet.
    double seconds() const { return m_seconds; }

    // What of the recording was played.
    std::uint64_t bytes() const;

    // Whether all expected packets came and, where they are verified, were equal.
    bool good() const;

private:
    bool open();
    bool wait_for_packets(int progress_descriptor);
    bool all_ended() const;
    std::uint64_t packets() const;
    void close();

    Play_Options m_options;
    std::vector<std::unique_ptr<Port_Reader>> m_ports;
    ADC_Reader m_adc;
    std::vector<std::thread> m_threads;
    std::string m_problem;
    double m_seconds = 0.0;
};

} // namespace Pelgar::ORBE::recording
