// Program orbe-record. The box, or the recording that plays one, as it is open from first to last: a
// basestation with four ports and a device with the ADC inputs, on one clock. Main thread; the destructor
// closes both.
#pragma once

#include <vector>

namespace Pelgar::ORBE::recorder {

class Opened_Box {
public:
    static constexpr int probe_slot = 2;
    static constexpr int adc_slot = 20;

    // In the working directory, which selects all this. Throws std::runtime_error with the library's reason.
    Opened_Box();
    ~Opened_Box();
    Opened_Box(const Opened_Box&) = delete;
    Opened_Box& operator=(const Opened_Box&) = delete;

    // With a headstage, 1..4.
    std::vector<int> ports() const;

    // Everything streams from the next sample on; throws std::runtime_error.
    void start() const;
    // Blocks until nothing is under way any more.
    void stop() const;

    // Ends the process when the library does not come back within a minute.
    void close();

private:
    bool m_is_open = false;
};

} // namespace Pelgar::ORBE::recorder
