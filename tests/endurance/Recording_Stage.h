// Endurance test. The host mode in simulation. It plays in the recording's time, which goes on as fast as the
// readers read. An opening is one playing of a recording of some seconds. The main thread.
#pragma once

#include "A_Stage.h"
#include "Opened_Library.h"
#include "Quick_Clock.h"

namespace Pelgar::ORBE::test {

class Recording_Stage final : public A_Stage {
public:
    // Writes the recording, of so many ticks.
    Recording_Stage(const Stage_Options& options, std::uint64_t ticks, Quick_Clock& clock);

    std::uint64_t longest_opening() const override { return m_due; }

    void begin(std::uint64_t ticks) override;

    std::uint64_t received() const override { return m_pace.received_by_all(); }

    bool is_over() const override { return received() >= m_due; }

    std::string end() override;

    Judging_Host& host() override { return m_host; }

    std::uint64_t bytes() const override { return m_bytes; }

private:
    Quick_Clock& m_clock;
    Opened_Library m_library;
    Stream_Pace m_pace;
    Judging_Host m_host;
    std::uint64_t m_ticks; // of the recording
    std::uint64_t m_due;   // those whose packets a host gets
    std::uint64_t m_recording_bytes = 0;
    std::uint64_t m_bytes = 0;
};

} // namespace Pelgar::ORBE::test
