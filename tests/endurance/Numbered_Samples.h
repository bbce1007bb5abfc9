// Endurance test. What the channels of one port see: noise that repeats, with the number of each sample in
// four channels, so that a sample is known by itself and none can be taken for another. Read on any thread.
#pragma once

#include "stream_format/Wire_Format.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace Pelgar::ORBE::test {

class Numbered_Samples {
public:
    // Samples of the AP band after which the noise repeats; a multiple of twelve.
    static constexpr std::uint64_t period = 840;

    // Four times ten bits of the number, lowest first. ADCs 0 to 3 sample them in the first slot.
    static constexpr std::array<std::size_t, 4> number_channels{0, 1, 24, 25};

    using Row = std::span<const std::int16_t, recording::channel_count>;

    // `port` is the API's, 1..4; `middle` is subtracted from every value.
    Numbered_Samples(std::uint64_t seed, unsigned port, int middle);

    // Whether a row that a host has received is the AP sample, or the LFP sample, of that number.
    bool is_ap(std::uint64_t number, Row row) const { return is(m_ap, number % period, number, row); }

    bool is_lfp(std::uint64_t number, Row row) const {
        return is(m_lfp, number % (period / recording::slots_per_sample), number, row);
    }

    // The number that the row says it has.
    std::uint64_t number_in(Row row) const;

    static std::uint16_t digit(std::uint64_t number, std::size_t index) {
        return static_cast<std::uint16_t>((number >> (10 * index)) & recording::sample_mask);
    }

private:
    using Rows = std::vector<std::array<std::int16_t, recording::channel_count>>;

    bool is(const Rows& rows, std::uint64_t place, std::uint64_t number, Row row) const;

    int m_middle;
    Rows m_ap;
    Rows m_lfp;
};

} // namespace Pelgar::ORBE::test
