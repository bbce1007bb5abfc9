#include "Loaded_Box.h"

#include "NeuropixAPI.h"

#include <stdexcept>
#include <vector>

namespace Pelgar::ORBE::host {

namespace {

constexpr int slot = 0;
constexpr int port = 1;
constexpr int dock = 0;
constexpr int packets_a_read = 12;

// It has no C twin, being an addition of the box's own to the API: this is what GCC calls it on both
// platforms.
constexpr const char* start_acquisition_name = "_ZN11Neuropixels17start_acquisitionEii";

void require(bool success, const char* text) {
    if (!success) {
        throw std::runtime_error(text);
    }
}

} // namespace

Loaded_Box::Loaded_Box(const std::string& library) : m_library(library) {}

void Loaded_Box::open() const {
    Neuropixels::basestationID device{};
    const auto list = m_library.function<decltype(Neuropixels::getDeviceList)>("np_getDeviceList");
    require(list(&device, 1) == 1, "there is no device");
    const auto open = m_library.function<decltype(Neuropixels::openBS)>("np_openBS");
    require(open(slot) == Neuropixels::SUCCESS, "the basestation does not open");
}

void Loaded_Box::start() const {
    const auto start = m_library.function<decltype(Neuropixels::start_acquisition)>(start_acquisition_name);
    require(start(slot, port) == Neuropixels::SUCCESS, "acquisition does not start");
}

void Loaded_Box::read() const {
    const auto read = m_library.function<decltype(Neuropixels::readElectrodeData)>("np_readElectrodeData");
    std::vector<Neuropixels::electrodePacket> packets(packets_a_read);
    int count = 0;
    require(read(slot, port, dock, packets.data(), &count, packets_a_read) == Neuropixels::SUCCESS &&
                count == packets_a_read,
            "packets are missing");
}

void Loaded_Box::close() const {
    const auto close = m_library.function<decltype(Neuropixels::closeBS)>("np_closeBS");
    require(close(slot) == Neuropixels::SUCCESS, "the basestation does not close");
}

} // namespace Pelgar::ORBE::host
