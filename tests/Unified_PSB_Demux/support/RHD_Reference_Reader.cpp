#include "RHD_Reference_Reader.h"

#include <algorithm>
#include <array>

namespace Pelgar::ORBE::test {

bool RHD_Reference_Reader::can_read() const {
    const auto found = std::find(m_words.begin() + static_cast<std::ptrdiff_t>(m_at), m_words.end(), 0x2A53);
    const auto left = static_cast<std::size_t>(m_words.end() - found);
    const bool is_preamble = left >= 4 && found[1] == 0x3813 && found[2] == 0x2AAA && found[3] == 0xD7A2;
    return left >= (is_preamble ? 20 + 35 * m_stream_count + m_stream_count % 4 : 4);
}

bool RHD_Reference_Reader::read(Rhd_Frame_Copy& frame) {
    frame = {};
    frame.amplifier_data.resize(32);
    std::uint64_t word = next();
    if (word != 0x2A53) {
        err += "Resync warning 1\n";
        while (word != 0x2A53 && !m_stopped) {
            word = next();
        }
        out += "Resync info 1\n";
    }
    frame.preamble = word;
    frame.preamble += std::uint64_t{next()} << 16;
    frame.preamble += std::uint64_t{next()} << 32;
    frame.preamble += std::uint64_t{next()} << 48;
    if (frame.preamble != 0xD7A22AAA38132A53) {
        err += "invalid RHD frame preamble \n";
        return false;
    }
    frame.timestamp = next_double();
    for (std::size_t position = 0; position < 35; ++position) {
        for (std::size_t stream = 0; stream < m_stream_count; ++stream) {
            const std::uint16_t sample = next();
            if (stream < 32) {
                auto& samples = frame.amplifier_data[stream];
                samples = samples.value_or(std::array<std::uint16_t, 35>{});
                (*samples)[position] = sample;
            }
        }
    }
    for (std::size_t i = 0; i < m_stream_count % 4 + 2; ++i) {
        next();
    }
    for (std::uint16_t& value : frame.board_adc_data) {
        value = next();
    }
    frame.ttl_in = next_double();
    frame.ttl_out = next_double();
    ++frames;
    return true;
}

std::uint16_t RHD_Reference_Reader::next() {
    return m_at < m_words.size() ? m_words[m_at++] : std::uint16_t{0};
}

std::uint32_t RHD_Reference_Reader::next_double() {
    const std::uint32_t low = next();
    return low + 65536U * next();
}

} // namespace Pelgar::ORBE::test
