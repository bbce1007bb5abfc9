// Two acquisition programs, one after the other, on the library as it is shipped: configure, run three times,
// the second time with settings that change while data stream, close, open and run again, on a recording.
// Exit code 0 when every packet was as it should be, else 1 with the reason on standard error.
#include "Host_Call.h"
#include "Host_Files.h"
#include "OE_Host.h"
#include "SG_Host.h"

#include <NeuropixAPI.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace Neuropixels;
using namespace Pelgar::ORBE::test;

constexpr std::uint64_t super_frames = 12'000;
// Without what stays behind in buffers that the recording's end does not fill.
constexpr std::uint64_t samples = super_frames - 240;
constexpr int changing_run = 1;
constexpr auto patience = std::chrono::seconds(60);

// `change` sets something while data stream, or nothing.
template <typename Host, typename Change>
void run_to_the_end(Host& host, bool has_adc_inputs, Change change) {
    const auto last = std::chrono::steady_clock::now() + patience;
    host.start();
    change();
    while (host.readers().fewest_packets() * 12 < samples ||
           (has_adc_inputs && host.readers().adc_packets() < samples)) {
        must("all packets come", std::chrono::steady_clock::now() < last);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    host.stop();
    const auto faults = host.readers().faults();
    must(faults.empty() ? "" : faults.front().c_str(), faults.empty());
    for (std::size_t i = 0; i < host.ports().size(); ++i) {
        must("no gap", host.readers().port(i).gaps().empty());
        must("the first sample is there", host.readers().port(i).first_sample() == 0U);
    }
    must("as many ADC packets as samples",
         !has_adc_inputs || host.readers().adc().packets() == host.readers().adc().last_sample() + 1);
}

void play_open_ephys(NPPlatformID_t platform) {
    OE_Host host(platform);
    HOST_MUST(host.find());
    for (int opening = 0; opening < 2; ++opening) {
        host.open();
        HOST_MUST(!host.ports().empty());
        host.configure();
        for (int run = 0; run < 3; ++run) {
            run_to_the_end(host, platform == NPPlatform_USB, [&] {
                if (run == changing_run) {
                    host.configure();
                }
            });
        }
        host.close();
    }
}

void play_spike_glx(NPPlatformID_t platform, int slot) {
    for (int run = 0; run < 3; ++run) {
        SG_Host host(platform, slot, run == 0 ? 12 : 24);
        HOST_MUST(host.find());
        host.open();
        host.configure();
        run_to_the_end(host, platform == NPPlatform_USB, [&] {
            if (run == changing_run) {
                host.change_settings();
            }
        });
    }
}

void play_all() {
    auto options = ramp_options();
    options.super_frames = super_frames;
    select_recording(options);
    select_host_mode("usb");
    play_open_ephys(NPPlatform_USB);
    play_spike_glx(NPPlatform_USB, 21);
    select_host_mode("pxi 2.0.169 3.2.191");
    play_open_ephys(NPPlatform_PXI);
    play_spike_glx(NPPlatform_PXI, 2);
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: acquisition_hosts FOLDER\n");
        return EXIT_FAILURE;
    }
    try {
        std::filesystem::create_directories(argv[1]);
        std::filesystem::current_path(argv[1]);
        play_all();
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "acquisition_hosts: %s\n", exception.what());
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
