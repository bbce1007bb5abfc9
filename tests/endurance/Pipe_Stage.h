// Endurance test. The box's own mode in simulation, on a recording without an end, as fast as it goes. The
// main thread.
#pragma once

#include "A_Stage.h"
#include "Opened_Library.h"
#include "Quick_Clock.h"
#include "Row_Pipe.h"

#include <memory>

namespace Pelgar::ORBE::test {

class Pipe_Stage final : public A_Stage {
public:
    Pipe_Stage(const Stage_Options& options, Quick_Clock& clock);

    std::uint64_t longest_opening() const override;
    void begin(std::uint64_t ticks) override;

    std::uint64_t received() const override { return m_pace.received_by_all(); }

    bool is_over() const override;
    std::string end() override;

    Judging_Host& host() override { return m_host; }

    std::uint64_t bytes() const override { return m_bytes_before + m_clock.played_bytes(); }

private:
    std::uint64_t bytes_of(std::uint64_t ticks) const;

    Stage_Options m_options;
    Quick_Clock& m_clock;
    Opened_Library m_library;
    Stream_Pace m_pace;
    Judging_Host m_host;
    std::unique_ptr<Row_Pipe> m_pipe;
    std::uint64_t m_ticks = 0;
    std::uint64_t m_bytes_before = 0; // of earlier openings
};

} // namespace Pelgar::ORBE::test
