// Test support: the three shift-register chains as lists of named bits, written down chain by chain from the
// first bit to the last, and what a test expects in them.
#pragma once

#include "probe_link/M_NP_Probe_Config.h"

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace Pelgar::ORBE::test {

using Chain_Bytes = std::vector<std::uint8_t>;

// The names of a chain's bits, in order. Unused bits have an empty name.
using Bit_Names = std::vector<std::string>;

Bit_Names shank_bit_names();

// Parity 0 is the chain of the even channels and ADCs, parity 1 the one of the odd.
Bit_Names base_bit_names(int parity);

struct Chain_Set {
    Chain_Bytes shank;
    Chain_Bytes base_even;
    Chain_Bytes base_odd;

    bool operator==(const Chain_Set&) const = default;
};

// What the module under test holds.
Chain_Set chains_of(const NP_Probe_Config_Module& config);

class Expected_Chains {
public:
    Expected_Chains();

    void set(const std::string& name, bool value);
    void set_number(const std::string& name, unsigned value, unsigned width);

    void connect(unsigned electrode, bool value);
    void reference(unsigned channel, unsigned reference);
    void gain(unsigned channel, unsigned ap, unsigned lfp);
    void standby(unsigned channel, bool value);
    void ap_filter(unsigned channel, bool value);

    const Chain_Set& chains() const { return m_chains; }

    // The bit's chain ("shank", "even", "odd") and its position in it.
    std::pair<std::string, std::size_t> place(const std::string& name) const { return m_places.at(name); }

private:
    void add(const std::string& chain, const Bit_Names& names, Chain_Bytes& bytes);
    Chain_Bytes& bytes_of(const std::string& chain);

    Chain_Set m_chains;
    std::map<std::string, std::pair<std::string, std::size_t>> m_places;
};

} // namespace Pelgar::ORBE::test
