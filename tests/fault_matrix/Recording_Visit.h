// Test support, fault matrix. A host's visit in which a recording plays the box, in a working directory of
// its own. The host's thread; a call that waits for what does not come is left waiting on a thread of its
// own.
#pragma once

#include "A_Way.h"
#include "Call_Result.h"
#include "Held_Pump.h"
#include "Slow_Recording.h"
#include "Stream_Reader.h"

#include "Log_Capture.h"
#include "Temp_Directory.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <future>
#include <memory>

namespace Pelgar::ORBE::test {

class Recording_Visit {
public:
    static constexpr const char* recording = "played.bin";

    explicit Recording_Visit(const A_Way& way);
    // Closes what is open.
    ~Recording_Visit();
    Recording_Visit(const Recording_Visit&) = delete;
    Recording_Visit& operator=(const Recording_Visit&) = delete;

    // As a healthy visit finds it, in the file that is there, if it is one.
    static void write_recording();

    // Until the slowness ends, the recording hands out no more than this.
    void make_slow(std::size_t bytes);
    void end_slowness();

    // Makes the phase's calls, up to the first that fails. After the start the first piece is on its way.
    Call_Result carry_out(Phase phase);

    // Reads until nothing comes any more. Right is a run of so many packets of each port, with every sample.
    Call_Result play_to_end(std::uint64_t packets);

    // In this run, of the port of which there were least.
    std::uint64_t packets() const;

    // Blocks until the call that was left waiting has come back, if there is one; false when that takes too
    // long.
    bool waiting_call_returns();

    bool has_waiting_call() const { return m_waiting.valid(); }

    Log_Capture& log() { return m_log; }

private:
    bool is_stalled() const;
    bool pump_gets_on() const;
    Call_Result make_watched(const Host_Call_To_Make& call);

    const A_Way& m_way;
    Temp_Directory m_directory;
    std::filesystem::path m_home;
    Log_Capture m_log;
    Stream_Reader m_reader;
    std::unique_ptr<Slow_Recording> m_slow;
    Held_Pump m_pump;
    std::future<Call_Result> m_waiting;
};

} // namespace Pelgar::ORBE::test
