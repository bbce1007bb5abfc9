#include "bist/Signal_Self_Test.h"

#include "bist/Self_Test_Stream.h"
#include "common/Console.h"
#include "connection/Box_Connection.h"
#include "ports/Probe_Bring_Up.h"
#include "self_test/Frequency_Check.h"
#include "self_test/L2_Sample_Accumulator.h"

#include <loguru.hpp>

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <optional>

namespace Pelgar::ORBE {

namespace {

constexpr const char* recording_name = "muxed_np_raw_data_2_minute.bin";
constexpr unsigned most_trials = 5;
constexpr std::size_t records_checked = 1024;

// With the box fully loaded a block of the port, 1,792 AP records, is there after eleven MiB at the latest. A
// stream that brings none in so much brings none at all.
constexpr std::uint64_t most_bytes_without_records = 100ULL << 20U;

// A box that sends brings something with one read of so many at least.
constexpr unsigned most_empty_pumps = 100;

// Pumps until there are enough records; false when they do not come. A failing read of the box stays failing.
// A recording begins anew behind its end, so that in simulation mode the end only counts when nothing has
// come since the last one.
bool collect(Self_Test_Stream& stream, const L2_Sample_Accumulator& samples, bool begins_anew) {
    std::size_t count = samples.ap_record_count();
    std::size_t count_at_end = count;
    std::uint64_t bytes_without_records = 0;
    unsigned empty_pumps = 0;
    while (count < records_checked) {
        const std::optional<std::uint32_t> pumped = stream.pump();
        const std::uint32_t bytes = pumped.value_or(0);
        const std::size_t before = count;
        count = samples.ap_record_count();
        bytes_without_records = count == before ? bytes_without_records + bytes : 0;
        empty_pumps = bytes == 0 ? empty_pumps + 1 : 0;
        if (count >= records_checked) {
            return true;
        }
        if (!pumped) {
            if (!begins_anew || count == count_at_end) {
                return false;
            }
            count_at_end = count;
        }
        if (bytes_without_records >= most_bytes_without_records || empty_pumps == most_empty_pumps) {
            return false;
        }
    }
    return true;
}

bool run_trials(Self_Test_Stream& stream, L2_Sample_Accumulator& samples, bool begins_anew) {
    for (unsigned trial = 0; trial < most_trials; ++trial) {
        if (!collect(stream, samples, begins_anew)) {
            LOG_F(ERROR, "signal test : %d AP samples instead of %d",
                  static_cast<int>(samples.ap_record_count()), static_cast<int>(records_checked));
            return false;
        }
        if (check_frequencies(samples, records_checked)) {
            console::out("Frq check passed at trial number : ", trial, '\n');
            return true;
        }
        samples.clear();
    }
    return false;
}

bool run_test(const Box_Connection& box, Probe_Bring_Up& bring_up, Box_Stream& box_stream, unsigned port,
              const std::string& directory) {
    if (!bring_up.probe_init_part_2(port, E_ORBE_Init_Config::pixel_test)) {
        return false;
    }
    const auto samples = std::make_shared<L2_Sample_Accumulator>();
    Self_Test_Stream stream(box, box_stream, port, samples);
    if (!stream.prepare(directory + '/' + recording_name)) {
        console::err("Prep error\n");
        return false;
    }
    // Also in simulation mode, where an earlier stop has paused the recording.
    stream.enable();
    const bool passed = run_trials(stream, *samples, box.is_simulation());
    stream.stop();
    stream.restore_listeners();
    return passed;
}

} // namespace

bool run_signal_test(const Box_Connection& box, Probe_Bring_Up& bring_up, Box_Stream& box_stream,
                     unsigned port, const std::string& directory) {
    try {
        return run_test(box, bring_up, box_stream, port, directory);
    } catch (const std::exception& exception) {
        console::err("Exception catched at execute_bist_signal_test : ", exception.what(), '\n');
        return false;
    }
}

} // namespace Pelgar::ORBE
