#include "bist/PSB_Self_Test.h"

#include "bist/Self_Test_Stream.h"
#include "common/Console.h"
#include "connection/Box_Connection.h"
#include "ports/Probe_Bring_Up.h"
#include "self_test/PSB_L2_Tester.h"

#include <cstdint>
#include <memory>

namespace Pelgar::ORBE {

namespace {

constexpr const char* recording_name = "muxed_raw_data_psb_test.bin";
constexpr unsigned most_pumps = 100;
constexpr std::uint32_t fewest_successes = 11;
constexpr std::uint32_t most_failures = 9;

} // namespace

bool run_psb_test(const Box_Connection& box, Probe_Bring_Up& bring_up, Box_Stream& box_stream, unsigned port,
                  const std::string& directory) {
    if (!bring_up.probe_init_part_2(port, E_ORBE_Init_Config::psb_test)) {
        return false;
    }
    const auto tester = std::make_shared<PSB_L2_Tester>();
    Self_Test_Stream stream(box, box_stream, port, tester);
    if (!stream.prepare(directory + '/' + recording_name)) {
        return false;
    }
    stream.enable();
    for (unsigned pumps = 0; pumps < most_pumps && stream.pump(); ++pumps) {
    }
    stream.stop();

    const std::uint32_t successes = tester->successful_comparison_count();
    const std::uint32_t failures = tester->failed_comparison_count();
    console::out("successful_comparison_count : ", successes, '\n');
    console::out("failed_comparison_count : ", failures, '\n');
    stream.restore_listeners();
    console::out("End of Bist PSB test\n");
    return failures <= most_failures && successes >= fewest_successes;
}

} // namespace Pelgar::ORBE
