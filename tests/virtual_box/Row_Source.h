// Test support, virtual box. Makes the rows of the enabled data sources from a seed, tick by tick: in every
// thirty-thousandth of a second one super frame of each port, row by row in turn, and one RHD frame. With all
// sources on from the start the bytes are those of a recording with the same options. One thread.
#pragma once

#include "A_Row_Source.h"

#include "generator/RHD_Generator.h"
#include "generator/Recording_Options.h"
#include "generator/Row_Writer.h"
#include "generator/Super_Frame_Generator.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace Pelgar::ORBE::test {

class Row_Source final : public A_Row_Source {
public:
    // Of the options the seed, the signals, the tone and the faults count; the rest is in the box's
    // registers. A probe in a test mode sends the test pattern, or the tone, on all channels instead of the
    // signals.
    explicit Row_Source(recording::Recording_Options options);

    void make_tick(const Stream_Enables& enables) override;
    void restart_probe(std::size_t port) override;
    void reset() override;
    std::span<const std::uint8_t> take(std::size_t wanted) override;

private:
    struct RHD {
        unsigned streams;
        recording::RHD_Generator generator;
        std::vector<std::uint16_t> words; // those that do not fill a row yet
    };

    struct Probe {
        Probe_Output output;
        recording::Super_Frame_Generator generator;
    };

    Probe make_probe(unsigned port, Probe_Output output) const;
    void write_rhd_rows(unsigned streams);

    recording::Recording_Options m_options;
    recording::Row_Writer m_writer;
    std::size_t m_taken = 0;
    std::array<std::optional<Probe>, box_port_count> m_probes;
    std::optional<RHD> m_rhd;
};

} // namespace Pelgar::ORBE::test
