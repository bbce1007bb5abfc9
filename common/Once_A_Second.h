// Layer: common. Keeps what would be told again and again down to once a second. One thread; nothing blocks.
#pragma once

#include <chrono>
#include <optional>

namespace Pelgar::ORBE {

class Once_A_Second {
public:
    using Clock = std::chrono::steady_clock;

    // Whether something may be told now; the next second begins then. True for the first call.
    bool is_due(Clock::time_point now = Clock::now()) {
        if (m_last && now - *m_last < std::chrono::seconds(1)) {
            return false;
        }
        m_last = now;
        return true;
    }

private:
    std::optional<Clock::time_point> m_last;
};

} // namespace Pelgar::ORBE
