#include "Numbered_Samples.h"

#include "signals/Channel_Signal.h"

#include <algorithm>

namespace Pelgar::ORBE::test {

namespace {

using namespace recording;

void fill(Channel_Signal& signal, Band band, int middle,
          std::vector<std::array<std::int16_t, channel_count>>& rows) {
    for (std::size_t sample = 0; sample < rows.size(); ++sample) {
        std::array<std::uint16_t, channel_count> values{};
        signal.fill(band, sample, values);
        std::transform(values.begin(), values.end(), rows[sample].begin(), [middle](std::uint16_t value) {
            return static_cast<std::int16_t>(int{value} - middle);
        });
    }
}

} // namespace

Numbered_Samples::Numbered_Samples(std::uint64_t seed, unsigned port, int middle)
    : m_middle(middle), m_ap(period), m_lfp(period / slots_per_sample) {
    Channel_Signal signal({}, 0.0, port, seed);
    fill(signal, Band::ap, middle, m_ap);
    fill(signal, Band::lfp, middle, m_lfp);
}

std::uint64_t Numbered_Samples::number_in(Row row) const {
    std::uint64_t number = 0;
    for (std::size_t i = number_channels.size(); i-- > 0;) {
        const int value = row[number_channels[i]] + m_middle;
        number = (number << 10U) | (static_cast<unsigned>(value) & sample_mask);
    }
    return number;
}

bool Numbered_Samples::is(const Rows& rows, std::uint64_t place, std::uint64_t number, Row row) const {
    const auto& expected = rows[place];
    for (std::size_t i = 0; i < number_channels.size(); ++i) {
        if (row[number_channels[i]] != digit(number, i) - m_middle) {
            return false;
        }
    }
    constexpr std::size_t between = number_channels[1] + 1;
    constexpr std::size_t behind = number_channels[3] + 1;
    return std::equal(row.begin() + between, row.begin() + number_channels[2], expected.begin() + between) &&
           std::equal(row.begin() + behind, row.end(), expected.begin() + behind);
}

} // namespace Pelgar::ORBE::test
