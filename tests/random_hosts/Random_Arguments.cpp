#include "Random_Arguments.h"

#include <algorithm>

namespace Pelgar::ORBE::test {

namespace {

// Of the largest records, a region holds more than this.
constexpr std::array<std::int64_t, 8> counts{0, 1, 2, 3, 7, 12, -1, std::numeric_limits<std::int32_t>::min()};
constexpr std::array<std::int64_t, 14> numbers{0,
                                               1,
                                               2,
                                               3,
                                               4,
                                               5,
                                               20,
                                               24,
                                               383,
                                               384,
                                               -1,
                                               255,
                                               std::numeric_limits<std::int32_t>::max(),
                                               std::numeric_limits<std::int32_t>::min()};
constexpr std::array<std::uint64_t, 6> lengths{0, 1, 2, 16, 255, 4096};
constexpr std::array<std::int64_t, 6> slots{0, 0, 2, 20, 7, -1};
constexpr std::array<std::int64_t, 8> ports{1, 2, 3, 4, 1, 2, 0, 5};
constexpr std::array<const char*, 8> names{
    "gain.csv", "adc.csv", "no such file", "", ".", "/dev/null", "gain.csv", "900000001_gainCalValues.csv"};

bool ends_with_any(std::string_view text, std::initializer_list<std::string_view> ends) {
    return std::ranges::any_of(ends, [&](std::string_view end) { return text.ends_with(end); });
}

} // namespace

Random_Arguments::Random_Arguments(std::uint64_t seed) : m_random(seed) {}

const char* Random_Arguments::text() {
    if (one_in(10)) {
        return nullptr;
    }
    m_text = one_in(10) ? std::string(below(20'000), 'x') : names[below(names.size())];
    return m_text.c_str();
}

void* Random_Arguments::memory() {
    if (one_in(10)) {
        return nullptr;
    }
    if (m_used == m_regions.size()) {
        m_regions.emplace_back(region_bytes / sizeof(std::uint64_t));
    }
    std::vector<std::uint64_t>& region = m_regions[m_used++];
    // What a caller left in it, at the place where records begin: two numbers that a platform can be.
    std::generate_n(region.begin(), 8, [this] { return below(4) | (std::uint64_t{below(4)} << 32U); });
    return region.data();
}

double Random_Arguments::real() {
    constexpr std::array<double, 8> values{0,
                                           1,
                                           -1,
                                           2.5,
                                           1e300,
                                           -1e300,
                                           std::numeric_limits<double>::infinity(),
                                           std::numeric_limits<double>::quiet_NaN()};
    return values[below(values.size())];
}

long Random_Arguments::enumerator(std::string_view parameter) {
    constexpr long first_switch_point = 0x01000000;
    if (ends_with_any(parameter, {" input", " output"})) {
        return static_cast<long>(below(0x30)) + (one_in(8) ? 0 : first_switch_point);
    }
    // What every enumeration can hold; beyond its bits a value is no value of its type.
    return static_cast<long>(below(2));
}

std::uint64_t Random_Arguments::number(std::string_view parameter, std::intmax_t least, std::uintmax_t most) {
    if (ends_with_any(parameter, {" len"})) {
        return lengths[below(lengths.size())];
    }
    if (ends_with_any(parameter,
                      {" count", " channelCount", " packetCount", " sampleCount", " requestedAmount"})) {
        return static_cast<std::uint64_t>(counts[below(counts.size())]);
    }
    if (ends_with_any(parameter, {" slotID", " slot"}) && !one_in(20)) {
        return static_cast<std::uint64_t>(slots[below(slots.size())]);
    }
    if (ends_with_any(parameter, {" portID"}) && !one_in(20)) {
        return static_cast<std::uint64_t>(ports[below(ports.size())]);
    }
    if (one_in(20)) {
        return one_in(2) ? static_cast<std::uint64_t>(least) : most;
    }
    return static_cast<std::uint64_t>(numbers[below(numbers.size())]);
}

} // namespace Pelgar::ORBE::test
