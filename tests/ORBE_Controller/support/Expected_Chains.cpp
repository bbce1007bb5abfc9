#include "Expected_Chains.h"

#include <stdexcept>

namespace Pelgar::ORBE::test {

namespace {

std::string numbered(const std::string& name, int number) {
    return name + ' ' + std::to_string(number);
}

void append_number(Bit_Names& names, const std::string& name, int width) {
    for (int bit = 0; bit < width; ++bit) {
        names.push_back(name + '.' + std::to_string(bit));
    }
}

template <typename Image>
Chain_Bytes bytes_of_image(const Image& image) {
    return {image.bytes().begin(), image.bytes().end()};
}

} // namespace

Bit_Names shank_bit_names() {
    Bit_Names names{"", "", "external 2"};
    for (int electrode = 959; electrode >= 1; electrode -= 2) {
        names.push_back(numbered("electrode", electrode));
    }
    names.emplace_back("tip 1");
    names.emplace_back("tip 2");
    for (int electrode = 0; electrode <= 958; electrode += 2) {
        names.push_back(numbered("electrode", electrode));
    }
    names.emplace_back("external 1");
    names.insert(names.end(), {"", ""});
    return names;
}

Bit_Names base_bit_names(int parity) {
    Bit_Names names;
    for (int channel = 382 + parity; channel >= 0; channel -= 2) {
        for (const char* reference : {"reference 0 of", "reference 1 of", "reference 2 of"}) {
            names.push_back(numbered(reference, channel));
        }
    }
    for (int channel = parity; channel < 384; channel += 2) {
        append_number(names, numbered("AP gain", channel), 3);
        append_number(names, numbered("LFP gain", channel), 3);
        names.push_back(numbered("standby", channel));
        names.push_back(numbered("AP filter", channel));
    }
    for (int adc = 28 + parity; adc >= 0; adc -= 4) {
        for (const int each : {adc, adc + 2}) {
            append_number(names, numbered("CompP", each), 5);
            append_number(names, numbered("CompN", each), 5);
        }
        for (const int each : {adc, adc + 2}) {
            append_number(names, numbered("Slope", each), 3);
            append_number(names, numbered("Fine", each), 2);
            append_number(names, numbered("Coarse", each), 2);
            append_number(names, numbered("Cfix", each), 4);
        }
    }
    return names;
}

Chain_Set chains_of(const NP_Probe_Config_Module& config) {
    return {bytes_of_image(config.shank_config()), bytes_of_image(config.base_config_even()),
            bytes_of_image(config.base_config_odd())};
}

Expected_Chains::Expected_Chains() {
    add("shank", shank_bit_names(), m_chains.shank);
    add("even", base_bit_names(0), m_chains.base_even);
    add("odd", base_bit_names(1), m_chains.base_odd);
}

void Expected_Chains::set(const std::string& name, bool value) {
    const auto [chain, position] = place(name);
    std::uint8_t& byte = bytes_of(chain).at(position / 8);
    const int mask = 1 << (position % 8);
    byte = static_cast<std::uint8_t>(value ? byte | mask : byte & ~mask);
}

void Expected_Chains::set_number(const std::string& name, unsigned value, unsigned width) {
    for (unsigned bit = 0; bit < width; ++bit) {
        set(name + '.' + std::to_string(bit), value % 2 != 0);
        value /= 2;
    }
}

void Expected_Chains::connect(unsigned electrode, bool value) {
    set("electrode " + std::to_string(electrode), value);
}

void Expected_Chains::reference(unsigned channel, unsigned reference) {
    for (unsigned each = 0; each < 3; ++each) {
        set("reference " + std::to_string(each) + " of " + std::to_string(channel), each == reference);
    }
}

void Expected_Chains::gain(unsigned channel, unsigned ap, unsigned lfp) {
    set_number("AP gain " + std::to_string(channel), ap, 3);
    set_number("LFP gain " + std::to_string(channel), lfp, 3);
}

void Expected_Chains::standby(unsigned channel, bool value) {
    set("standby " + std::to_string(channel), value);
}

void Expected_Chains::ap_filter(unsigned channel, bool value) {
    set("AP filter " + std::to_string(channel), value);
}

void Expected_Chains::add(const std::string& chain, const Bit_Names& names, Chain_Bytes& bytes) {
    bytes.assign((names.size() + 7) / 8, 0);
    for (std::size_t position = 0; position < names.size(); ++position) {
        if (!names[position].empty() && !m_places.try_emplace(names[position], chain, position).second) {
            throw std::logic_error("two bits are named " + names[position]);
        }
    }
}

Chain_Bytes& Expected_Chains::bytes_of(const std::string& chain) {
    if (chain == "shank") {
        return m_chains.shank;
    }
    return chain == "even" ? m_chains.base_even : m_chains.base_odd;
}

} // namespace Pelgar::ORBE::test
