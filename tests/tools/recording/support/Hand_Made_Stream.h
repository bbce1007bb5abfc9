// Test support: a stream put together row by row, by arithmetic of its own, so that it checks the generator
// and the expectations instead of repeating them.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <istream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace Pelgar::ORBE::test {

class Hand_Made_Stream {
public:
    using Words = std::array<std::uint16_t, 7>;
    // The value (ten bits) that ADC `adc` gives in the frame with this counter.
    using Values = std::function<unsigned(std::uint32_t counter, unsigned adc)>;

    void row(unsigned stream, const Words& words) {
        m_bytes.push_back(static_cast<char>(0xD0 | stream));
        m_bytes.push_back(static_cast<char>(m_counters[stream]++));
        for (const unsigned word : words) {
            m_bytes.push_back(static_cast<char>(word & 0xFF));
            m_bytes.push_back(static_cast<char>(word >> 8));
        }
    }

    // The five rows of one frame.
    void frame(unsigned stream, std::uint32_t counter, const Values& values, bool flagged) {
        for (unsigned r = 0; r < 5; ++r) {
            Words words{};
            for (unsigned lane = 0; lane < 7; ++lane) {
                const unsigned index = 5 * lane + r;
                unsigned value = 0;
                if (index < 32) {
                    value = values(counter, index);
                } else if (index == 33) {
                    value = (counter >> 10) & 0x3FF;
                } else if (index == 34) {
                    value = counter & 0x3FF;
                }
                words[lane] = static_cast<std::uint16_t>((lane + 1) << 12 | value);
            }
            if (flagged && r == 0) {
                words[0] |= 0x0800;
            }
            row(stream, words);
        }
    }

    // Thirteen frames, the first of them with counter 13 * `number`.
    void super_frame(unsigned stream, std::uint32_t number, const Values& values, bool flagged = true) {
        for (std::uint32_t i = 0; i < 13; ++i) {
            frame(stream, 13 * number + i, values, flagged && i == 0);
        }
    }

    // Appends a run of RHD words, seven a row; what does not fill a row waits for the next call.
    void rhd(const std::vector<std::uint16_t>& words) {
        for (const std::uint16_t word : words) {
            m_rhd[m_rhd_count++] = word;
            if (m_rhd_count == 7) {
                row(4, m_rhd);
                m_rhd_count = 0;
            }
        }
    }

    // The words of a frame without amplifier data.
    static std::vector<std::uint16_t> rhd_frame(const std::array<std::uint16_t, 8>& adc, std::uint32_t ttl) {
        std::vector<std::uint16_t> words = {0x2A53, 0x3813, 0x2AAA, 0xD7A2, 7, 0, 0, 0};
        words.insert(words.end(), adc.begin(), adc.end());
        words.push_back(static_cast<std::uint16_t>(ttl));
        words.push_back(static_cast<std::uint16_t>(ttl >> 16));
        words.push_back(0);
        words.push_back(0);
        return words;
    }

    // Fills up to a whole number of 1 MiB pieces with rows of an unknown stream.
    void pad() {
        while (m_bytes.size() % (1U << 20) != 0) {
            row(9, {});
        }
    }

    std::string& bytes() { return m_bytes; }

    std::unique_ptr<std::istream> open() const { return std::make_unique<std::istringstream>(m_bytes); }

private:
    std::string m_bytes;
    std::array<std::uint8_t, 16> m_counters{};
    Words m_rhd{};
    std::size_t m_rhd_count = 0;
};

} // namespace Pelgar::ORBE::test
