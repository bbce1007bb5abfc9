// Endurance test. A figure that is looked at now and then, and must not grow. One thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Pelgar::ORBE::test {

class Flat_Series {
public:
    // Values may be so much higher than they were after the warm-up.
    Flat_Series(std::string name, std::uint64_t allowance)
        : m_name(std::move(name)), m_allowance(allowance) {}

    void add(std::uint64_t value) { m_values.push_back(value); }

    // The highest of the first fifth of the values is what the rest is held against: a stream begins with its
    // pump, which a recording that was played to its end has no more.
    static constexpr std::size_t fewest_values = 20;

    std::uint64_t settled() const;
    std::uint64_t highest() const;

    // What is wrong with it; empty when nothing is. Fewer values than `fewest_values` cannot be judged, which
    // is wrong, too.
    std::string fault() const;

private:
    std::string m_name;
    std::uint64_t m_allowance;
    std::vector<std::uint64_t> m_values;
};

} // namespace Pelgar::ORBE::test
