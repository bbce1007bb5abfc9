// newer_host LIBRARY FOLDER: an acquisition program that loads the library at run time, looks up the C names
// that newer lines of programs import, and records from a recording in the folder with nothing but these.
// Exit code 0 when every packet was as it should be, else 1 with the reason on standard error.
#include "ADC_Check.h"
#include "Host_Call.h"
#include "Host_Files.h"
#include "Loaded_Library.h"
#include "Port_Check.h"

#include <NeuropixAPI.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
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
using Pelgar::ORBE::host::Loaded_Library;

constexpr int slot = 24; // that the user has given the device
constexpr int dock = 1;
constexpr int row_length = 24;
constexpr std::uint64_t super_frames = 6000;
constexpr std::uint64_t least_samples = super_frames - 240;
constexpr auto patience = std::chrono::seconds(60);

// The C names as the program calls them. Throws std::runtime_error when one is not exported.
struct Functions {
    explicit Functions(const Loaded_Library& library)
        : check_driver(library.function<decltype(checkFtdiDriver)>("np_checkFtdiDriver")),
          list_devices(library.function<decltype(getDeviceList)>("np_getDeviceList")),
          map(library.function<decltype(mapBS)>("np_mapBS")),
          check_supported(
              library.function<decltype(checkBasestationSupported)>("np_checkBasestationSupported")),
          firmware(library.function<decltype(ob_getFirmwareInfo)>("np_ob_getFirmwareInfo")),
          reset_firmware(library.function<decltype(bs_resetFirmware)>("np_bs_resetFirmware")),
          reset_card(library.function<decltype(bsc_resetFirmware)>("np_bsc_resetFirmware")),
          open(library.function<decltype(openBS)>("np_openBS")),
          open_probe(library.function<decltype(openProbe)>("np_openProbe")),
          initialise(library.function<decltype(init)>("np_init")),
          set_clock_period(library.function<decltype(setSyncClockPeriod)>("np_setSyncClockPeriod")),
          arm_box(library.function<decltype(arm)>("np_arm")),
          trigger(library.function<decltype(setSWTrigger)>("np_setSWTrigger")),
          read_probe(library.function<decltype(readElectrodeData)>("np_readElectrodeData")),
          read_adc(library.function<decltype(ADC_readPackets)>("np_ADC_readPackets")),
          close(library.function<decltype(closeBS)>("np_closeBS")) {}

    decltype(checkFtdiDriver)* check_driver;
    decltype(getDeviceList)* list_devices;
    decltype(mapBS)* map;
    decltype(checkBasestationSupported)* check_supported;
    decltype(ob_getFirmwareInfo)* firmware;
    decltype(bs_resetFirmware)* reset_firmware;
    decltype(bsc_resetFirmware)* reset_card;
    decltype(openBS)* open;
    decltype(openProbe)* open_probe;
    decltype(init)* initialise;
    decltype(setSyncClockPeriod)* set_clock_period;
    decltype(arm)* arm_box;
    decltype(setSWTrigger)* trigger;
    decltype(readElectrodeData)* read_probe;
    decltype(ADC_readPackets)* read_adc;
    decltype(closeBS)* close;
};

void find_and_open(const Functions& box) {
    driver_version required{};
    driver_version current{};
    bool present = false;
    bool right = false;
    must("np_checkFtdiDriver answers", box.check_driver(&required, &current, &present, &right) == SUCCESS);
    must("the driver is there and right", present && right);
    basestationID id{};
    must("there is one device", box.list_devices(&id, 1) == 1 && id.platformid == NPPlatform_USB);
    must("np_mapBS", box.map(id.ID, slot) == SUCCESS);
    must("np_checkBasestationSupported", box.check_supported(slot) == SUCCESS);
    firmware_Info info{};
    must("np_ob_getFirmwareInfo", box.firmware(slot, &info) == SUCCESS && info.name[0] != '\0');
    must("np_bs_resetFirmware", box.reset_firmware(slot) == NOTSUPPORTED);
    must("np_bsc_resetFirmware", box.reset_card(slot) == NOTSUPPORTED);
    must("np_openBS", box.open(slot) == SUCCESS);
    for (const int port : {1, 2}) {
        must("np_openProbe", box.open_probe(slot, port, dock) == SUCCESS);
        must("np_init", box.initialise(slot, port, dock) == SUCCESS);
    }
}

void expect_none(const std::vector<std::string>& faults) {
    must(faults.empty() ? "" : faults.front().c_str(), faults.empty());
}

// Everything that the recording holds, from its first sample on.
void record(const Functions& box) {
    must("np_setSyncClockPeriod", box.set_clock_period(slot, 100) == SUCCESS);
    must("np_arm", box.arm_box(slot) == SUCCESS);
    must("np_setSWTrigger", box.trigger(slot) == SUCCESS);
    std::vector<Port_Check> ports{Port_Check(1), Port_Check(2)};
    ADC_Check inputs;
    std::vector<electrodePacket> packets(64);
    std::vector<PacketInfo> infos(288);
    std::vector<std::int16_t> rows(infos.size() * row_length);
    const auto last = std::chrono::steady_clock::now() + patience;
    const auto has_all = [&] {
        return inputs.packets() >= least_samples &&
               std::all_of(ports.begin(), ports.end(),
                           [](const Port_Check& port) { return port.packets() * 12 >= least_samples; });
    };
    while (!has_all()) {
        must("packets come", std::chrono::steady_clock::now() < last);
        int count = 0;
        for (int port = 1; port <= 2; ++port) {
            must("np_readElectrodeData",
                 box.read_probe(slot, port, dock, packets.data(), &count, 64) == SUCCESS);
            for (int i = 0; i < count; ++i) {
                ports[static_cast<std::size_t>(port - 1)].take(packets[static_cast<std::size_t>(i)]);
            }
        }
        std::fill(rows.begin(), rows.end(), ADC_Check::unwritten);
        must("np_ADC_readPackets",
             box.read_adc(slot, infos.data(), rows.data(), row_length, 288, &count) == SUCCESS);
        for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
            inputs.take(infos[i], rows.data() + i * row_length, row_length);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    for (const Port_Check& port : ports) {
        expect_none(port.faults());
        must("no gap", port.gaps().empty());
        must("the first sample is there", port.first_sample() == 0U);
    }
    expect_none(inputs.faults());
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: newer_host LIBRARY FOLDER\n");
        return EXIT_FAILURE;
    }
    try {
        std::filesystem::create_directories(argv[2]);
        std::filesystem::current_path(argv[2]);
        auto options = ramp_options({1, 2});
        options.super_frames = super_frames;
        select_recording(options);
        select_host_mode("usb");
        const Loaded_Library library(argv[1]);
        const Functions box(library);
        find_and_open(box);
        for (int run = 0; run < 2; ++run) {
            record(box);
        }
        must("np_closeBS", box.close(slot) == SUCCESS);
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "newer_host: %s\n", exception.what());
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
