// Test support, fault matrix. What a cell takes: a virtual box behind the exported functions, a working
// directory with the files of a lab, the log. Made and used on one thread.
#pragma once

#include "A_Way.h"

#include "Log_Capture.h"
#include "Temp_Directory.h"
#include "Virtual_Box.h"
#include "Waiter_Guard.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <vector>

namespace Pelgar::ORBE::test {

class Bench {
public:
    // Ramps on all channels; `damage` is done to the box's rows.
    Bench(const A_Way& way, std::vector<recording::Fault> damage);

    // Whoever opened it has closed the basestation.
    ~Bench();
    Bench(const Bench&) = delete;
    Bench& operator=(const Bench&) = delete;

    Virtual_Box& box() { return *m_box; }

    DMA_Source& stream() { return m_box->stream(); }

    // Of the port whose probe is brought up.
    Virtual_Headstage& headstage() { return m_box->headstage(A_Way::port - 1); }

    Log_Capture& log() { return m_log; }

    // The files that a host names; they are right.
    static void write_calibration();

    // What the headstage's devices and the probe's chains hold.
    std::vector<std::uint8_t> probe_state();

    static constexpr std::uint64_t seed = 77;

private:
    Temp_Directory m_directory;
    std::filesystem::path m_home;
    Waiter_Guard m_waiter;
    Log_Capture m_log;
    std::shared_ptr<Virtual_Box> m_box;
};

} // namespace Pelgar::ORBE::test
