// Program orbe-view, history. How the streams were over the last two minutes, two lines a second, and what
// has come together since the source began or jumped, however long that is. Written on the source's thread,
// read on the thread that makes pictures.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <limits>
#include <mutex>
#include <vector>

namespace Pelgar::ORBE::view {

inline constexpr std::size_t port_count = 4;
// The ports, and behind them the stream of the ADC inputs.
inline constexpr std::size_t stream_count = port_count + 1;

// What a source cannot know is no number.
inline constexpr double unknown = std::numeric_limits<double>::quiet_NaN();

// Of one stream in one stretch of time.
struct Stream_Health {
    double rate = unknown;         // samples a second
    double row_gaps = unknown;     // places where the row counter jumps
    double frame_gaps = unknown;   // places where the frame counter jumps
    double wrong_tags = unknown;   // words
    double lost_samples = unknown; // that the stream left out
    double queue_fill = unknown;   // 0 to 1
    double link_lock = unknown;    // 1: locked
};

struct Health {
    double seconds = 0.0; // of the data
    std::array<Stream_Health, stream_count> streams{};
};

// Of one stream in all lines since the beginning or the last jump, forgotten ones as well.
struct Stream_Sums {
    double row_gaps = unknown;
    double frame_gaps = unknown;
    double wrong_tags = unknown;
    double lost_samples = unknown;
    bool has_come = false; // any sample
};

struct Health_Report {
    std::vector<Health> lines; // oldest first
    std::array<Stream_Sums, stream_count> sums{};
};

class Health_History {
public:
    void add(const Health& health);
    void clear();
    Health_Report report() const;

private:
    static constexpr std::size_t capacity = 240;

    mutable std::mutex m_mutex;
    std::deque<Health> m_health;
    std::array<Stream_Sums, stream_count> m_sums{};
};

} // namespace Pelgar::ORBE::view
