// Endurance test. The rows of numbered samples and inputs, made as fast as memory is copied: all that is the
// same every time is made once, and counters and numbers are put in. One thread.
#pragma once

#include "A_Row_Source.h"
#include "Numbered_Inputs.h"
#include "Sample_Numbers.h"

#include "stream_format/Wire_Format.h"

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace Pelgar::ORBE::test {

struct Endless_Options {
    std::uint64_t seed = 1;
    Sample_Numbers numbers;
    // The stamp of the first RHD frame: 0.7 s before the wrap.
    std::uint32_t first_stamp = 0xFFFF'FFFFU - 20'000U;
    // The tick in which one bit of one sample of the first port is sent wrong.
    std::optional<std::uint64_t> fault_at;
};

class Endless_Rows final : public A_Row_Source {
public:
    explicit Endless_Rows(const Endless_Options& options);

    void make_tick(const Stream_Enables& enables) override;

    void restart_probe(std::size_t port) override { m_ticks.at(port) = 0; }

    void reset() override;
    std::span<const std::uint8_t> take(std::size_t wanted) override;

private:
    using Super_Frame = std::array<std::uint8_t, recording::rows_per_super_frame * recording::row_bytes>;

    void make_super_frames(unsigned port);
    void write_super_frame(unsigned port, std::size_t rank, std::size_t ports);
    void write_rhd_rows();

    Endless_Options m_options;
    Numbered_Inputs m_inputs;
    std::array<std::vector<Super_Frame>, recording::port_count> m_super_frames; // made when first sent
    std::array<std::uint64_t, recording::port_count> m_ticks{};
    std::uint64_t m_rhd_tick = 0;
    std::array<std::uint8_t, recording::rhd_stream + 1> m_row_counters{};
    std::vector<std::uint16_t> m_rhd_words; // those that do not fill a row yet
    std::vector<std::uint8_t> m_bytes;
    std::size_t m_size = 0;
    std::size_t m_taken = 0;
};

} // namespace Pelgar::ORBE::test
