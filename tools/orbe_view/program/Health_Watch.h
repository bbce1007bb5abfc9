// Program orbe-view. How the streams of the box fare: asks the library and the histories twice a second what
// they have counted, and puts down what has been added since the last time. On the thread that reads the
// streams; a look takes microseconds and changes nothing in the box.
#pragma once

#include "history/Health_History.h"
#include "history/Histories.h"
#include "rows/Stream_Damage.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace Pelgar::ORBE::view {

class Health_Watch {
public:
    using Clock = std::chrono::steady_clock;
    using Queue_Fills = std::array<double, stream_count>; // 0 to 1; unknown for a stream that there is not

    // Puts its lines into the histories, which must outlive the object.
    explicit Health_Watch(Histories& histories) : m_histories(histories) {}

    // A run of the streams begins.
    void begin(Clock::time_point now);

    // The stream (of a port, 0..3, or of the ADC inputs, 4) has brought packets. With the first ones of a run
    // its counters may have jumped to where the run begins: that is no damage.
    void came(std::size_t stream);

    bool is_due(Clock::time_point now) const { return now - m_looked_at >= between_looks; }

    // Puts down how the streams have fared since the last look; `seconds` is the data's own time. The first
    // look of a run puts nothing down: the streams took a part of its time to come.
    void look(Clock::time_point now, double seconds, const Queue_Fills& fills);

private:
    // At most so often is a register of the box looked at.
    static constexpr auto between_looks = std::chrono::milliseconds(500);

    struct Counted {
        std::uint64_t samples = 0;
        std::uint64_t lost = 0;
    };

    // Nothing for a stream that there is not.
    std::optional<Counted> counted(std::size_t stream) const;
    void note_damage(Stream_Health& line, std::size_t stream);
    void note_locks(Health& health) const;

    Histories& m_histories;
    Clock::time_point m_looked_at;
    bool m_has_looked = false;
    std::array<Counted, stream_count> m_counted;
    std::array<std::optional<demux::Stream_Damage>, stream_count> m_damage; // nothing: nothing has come yet
};

} // namespace Pelgar::ORBE::view
