// Program orbe-view, history. What the ADC and the TTL inputs have brought lately. Filled on the thread of
// the stream, read on the thread that makes pictures, in parts where it is much.
#pragma once

#include "history/Fair_Mutex.h"
#include "history/Loss_Count.h"
#include "history/Stream_History.h"

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <span>

namespace Pelgar::ORBE::view {

class ADC_History {
public:
    static constexpr std::size_t analog_inputs = 8;
    static constexpr std::size_t ttl_inputs = 4;
    static constexpr std::size_t width = analog_inputs + ttl_inputs;
    // The comparators of the inputs that the box lacks show its TTL inputs.
    static constexpr std::size_t first_ttl_comparator = analog_inputs;

    // Volts of a sample of 32768.
    explicit ADC_History(double range_volts) : m_range_volts(range_volts) {}

    // Volts a count.
    float scale() const { return static_cast<float>(m_range_volts / 32768.0); }

    struct Row {
        std::uint64_t number;
        std::int16_t values[width]; // the inputs, then the TTL levels, 0 or 1
    };

    void append(std::span<const Row> rows);
    // So many rows from number `first` on are lost.
    void append_lost(std::uint64_t first, std::uint64_t count);
    // What comes next is of another time.
    void clear();
    // And its numbers are those of other samples.
    void begin_anew();

    class Reading {
    public:
        explicit Reading(const ADC_History& history) : m_history(history), m_lock(history.m_mutex) {}

        const Stream_History& stream() const { return m_history.m_stream; }

        std::uint64_t samples() const { return m_history.m_samples; }

        // As often as they were passed; and each once, however often a jump led there.
        std::uint64_t lost_samples() const { return m_history.m_losses.passed(); }

        std::uint64_t different_lost_samples() const { return m_history.m_losses.different(); }

    private:
        const ADC_History& m_history;
        std::unique_lock<Fair_Mutex> m_lock;
    };

private:
    double m_range_volts;
    mutable Fair_Mutex m_mutex;
    // Two seconds as they are, half a minute in milliseconds.
    Stream_History m_stream{{width, 60'000, 30, 32'000}};
    std::uint64_t m_samples = 0;
    Loss_Count m_losses;
};

} // namespace Pelgar::ORBE::view
