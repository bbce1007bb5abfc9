// Layer: façade, host mode. The level of the sync input at each of the last samples, as the RHD stream has
// brought it, for the packets of the probes, which arrive on other threads. Written on the RHD worker thread,
// read on the host's threads; nothing blocks.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

namespace Pelgar::ORBE::npoe_adapter {

class Sync_Levels {
public:
    // A new time of streaming, with a number that no other has. The RHD worker thread.
    void restart(std::uint32_t streaming);

    // The level from this sample on. Numbers only grow. The RHD worker thread.
    void record(std::uint64_t sample, bool level);

    // Whether the level at the sample is known, in this time of streaming.
    bool has(std::uint32_t streaming, std::uint64_t sample) const;

    // The level at the sample; where it is not known yet, or not any more, the last one of the time of
    // streaming, and low in another one.
    bool level(std::uint32_t streaming, std::uint64_t sample) const;

private:
    static constexpr unsigned bits_per_word = 64;
    static constexpr std::size_t word_count = 4096;
    // 8.7 s, much longer than any packet waits.
    static constexpr std::uint64_t kept = bits_per_word * word_count;

    void set(std::uint64_t sample, bool level);

    std::array<std::atomic<std::uint64_t>, word_count> m_words{};
    std::atomic<std::uint32_t> m_streaming{0};
    std::atomic<std::uint64_t> m_end{0}; // the first sample that is not known yet
    std::atomic<bool> m_last{false};
};

} // namespace Pelgar::ORBE::npoe_adapter
