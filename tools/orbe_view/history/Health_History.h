// Program orbe-view, history. How the streams were over the last minutes, a line a second. Written on the
// source's thread, read on the thread that makes pictures.
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

class Health_History {
public:
    void add(const Health& health);
    void clear();
    // Oldest first.
    std::vector<Health> all() const;

private:
    static constexpr std::size_t capacity = 240;

    mutable std::mutex m_mutex;
    std::deque<Health> m_health;
};

} // namespace Pelgar::ORBE::view
