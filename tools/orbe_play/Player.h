// Program orbe-play. Plays a recording through the API, as a host does: one basestation, a reader for each
// port and one for the ADC packets. Works on the caller's thread until everything has come or nothing comes
// any more.
#pragma once

#include "ADC_Stream.h"
#include "Paced_Recording.h"
#include "Port_Stream.h"
#include "Stream_Reader.h"
#include "checker/Check_Report.h"
#include "expectation/Packet_Counts.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Pelgar::ORBE::recording {

struct Play_Options {
    std::filesystem::path recording; // absolute
    bool verify = false;
    std::chrono::duration<double> stall_limit{10.0};
    Paced_Recording* paced = nullptr; // plays through this pipe; null: from the file
};

class Player {
public:
    explicit Player(Play_Options options);
    Player(const Player&) = delete;
    Player& operator=(const Player&) = delete;

    // Plays the whole recording in the current working directory, which names it. Progress is drawn on
    // `progress_descriptor` when that is a terminal. Answers false when the basestation cannot be opened, the
    // packets stop coming or the user stops the program; `problem` then says what happened.
    bool play(int progress_descriptor);

    const std::string& problem() const { return m_problem; }

    // Who answered at each port when it was brought up.
    const std::vector<std::string>& identities() const { return m_identities; }

    // One result for each of the ports 1 to 4; empty before the basestation was opened.
    std::vector<const Reader_Result*> ports() const;

    const Reader_Result& adc() const { return m_adc->result(); }

    // From the start of the acquisition to the last packet.
    double seconds() const { return m_seconds; }

    // What the recording holds and what is wrong with it.
    const Check_Report& recording() const { return m_recording; }

    // What of the recording reaches the library.
    std::uint64_t bytes() const { return m_recording.bytes - m_recording.bytes_never_pushed; }

    std::uint64_t expected_packets() const { return m_expected; }

    // Whether all expected packets came and, where they are verified, were equal.
    bool good() const;

private:
    using Port_Reader = Stream_Reader<Port_Stream>;
    using ADC_Reader = Stream_Reader<ADC_Stream>;

    bool open();
    bool prepare(int progress_descriptor);
    bool wait_for_packets(int progress_descriptor);
    void close();

    // All streams, in the order of the table.
    std::vector<const Reader_Result*> results() const;
    bool all_complete() const;
    bool taken(const Packet_Counts& counts) const;
    std::uint64_t sum(const std::function<std::uint64_t(const Reader_Result&)>& number) const;

    Play_Options m_options;
    std::vector<std::unique_ptr<Port_Reader>> m_ports;
    std::unique_ptr<ADC_Reader> m_adc;
    Check_Report m_recording;
    std::uint64_t m_expected = 0;
    std::string m_problem;
    std::vector<std::string> m_identities;
    double m_seconds = 0.0;
};

} // namespace Pelgar::ORBE::recording
