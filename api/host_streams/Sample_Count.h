// Layer: façade, host mode. Counts the samples of one stream from the first one of a time of streaming, by
// the stream's own counter, which begins anywhere. One thread; nothing blocks.
#pragma once

#include <cstdint>

namespace Pelgar::ORBE::npoe_adapter {

class Sample_Count {
public:
    // The next sample is number 0.
    void restart() { m_is_started = false; }

    // The number of the sample with this counter. What the counter has left out is left out here; a counter
    // that goes back belongs to a stream that began anew, and is taken to go on.
    std::uint64_t number_of(std::uint64_t counter) {
        if (!m_is_started) {
            m_is_started = true;
            m_offset = 0 - counter;
        } else if (counter + m_offset - m_next >= goes_back) {
            m_offset = m_next - counter;
        }
        m_next = counter + m_offset + 1;
        return m_next - 1;
    }

private:
    // In arithmetic modulo 2^64.
    static constexpr std::uint64_t goes_back = std::uint64_t{1} << 63U;

    bool m_is_started = false;
    std::uint64_t m_offset = 0;
    std::uint64_t m_next = 0;
};

} // namespace Pelgar::ORBE::npoe_adapter
