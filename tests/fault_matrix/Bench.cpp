#include "Bench.h"

#include "Gain_Calibration_File.h"
#include "Virtual_Box_Controller.h"

#include "generator/Calibration_Generator.h"

#include <NeuropixAPI.h>
#include <adapter/Adapter_State.h>

#include <fstream>
#include <utility>

namespace Pelgar::ORBE::test {

namespace {

// Of every probe of the virtual box.
constexpr std::uint64_t probe_serial_number = 0x1122334455667788;

recording::Recording_Options stream_options(std::vector<recording::Fault> damage) {
    recording::Recording_Options options;
    options.seed = Bench::seed;
    options.signals = {{recording::Signal_Kind::ramp, recording::every_channel()}};
    options.faults = std::move(damage);
    return options;
}

} // namespace

Bench::Bench(const A_Way& way, std::vector<recording::Fault> damage)
    : m_home(std::filesystem::current_path()),
      m_box(std::make_shared<Virtual_Box>(stream_options(std::move(damage)))) {
    std::filesystem::current_path(m_directory.path());
    m_box->stream().set_limit(0);
    way.select();
    write_calibration();
    *npoe_adapter::g_controller_factory = [box = m_box](bool) {
        return std::make_shared<ORBE_Controller_Library>(std::make_shared<Virtual_Box_Controller>(box),
                                                         false);
    };
    Neuropixels::basestationID id{};
    Neuropixels::getDeviceList(&id, 1);
}

Bench::~Bench() {
    *npoe_adapter::g_controller_factory = {};
    std::filesystem::current_path(m_home);
}

void Bench::write_calibration() {
    const recording::Calibration_Generator calibration(seed, probe_serial_number, "\n");
    std::ofstream(A_Way::adc_calibration, std::ios::trunc) << calibration.adc_calibration();
    Gain_Calibration_File gains; // factors of 1: samples stay what they are
    gains.path = A_Way::gain_calibration;
    gains.write();
}

std::vector<std::uint8_t> Bench::probe_state() {
    std::vector<std::uint8_t> state;
    for (const std::uint8_t device :
         {Virtual_Headstage::serializer, Virtual_Headstage::deserializer, Virtual_Headstage::probe_asic}) {
        for (unsigned reg = 0; reg < 256; ++reg) {
            state.push_back(headstage().value(device, static_cast<std::uint8_t>(reg)));
        }
    }
    for (const std::uint8_t chain : {Probe_ASIC::base_chain_of_odd_channels,
                                     Probe_ASIC::base_chain_of_even_channels, Probe_ASIC::shank_chain}) {
        const auto bytes = headstage().chain(chain);
        state.insert(state.end(), bytes.begin(), bytes.end());
    }
    return state;
}

} // namespace Pelgar::ORBE::test
