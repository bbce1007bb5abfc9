#include "Opened_Box.h"

#include "Library_Call.h"
#include "library_run/Time_Limit.h"

#include <chrono>
#include <cstdio>
#include <stdexcept>

namespace Pelgar::ORBE::recorder {

namespace {

using namespace Neuropixels;

constexpr int port_count = 4;
constexpr std::chrono::seconds close_limit(60);

void close_slots() {
    closeBS(Opened_Box::adc_slot);
    closeBS(Opened_Box::probe_slot);
}

} // namespace

Opened_Box::Opened_Box() {
    basestationID devices[2]{};
    getDeviceList(devices, 2);
    try {
        must_succeed(openBS(probe_slot), "the box cannot be opened");
        must_succeed(openBS(adc_slot), "the box's ADC inputs cannot be opened");
        m_is_open = true;
    } catch (...) {
        close_slots();
        throw;
    }
}

Opened_Box::~Opened_Box() {
    close();
}

void Opened_Box::close() {
    if (m_is_open) {
        m_is_open = false;
        tools::run_within(close_limit, close_slots,
                          [] { std::fprintf(stderr, "orbe-record: closeBS does not come back\n"); });
    }
}

std::vector<int> Opened_Box::ports() const {
    std::vector<int> ports;
    for (int port = 1; port <= port_count; ++port) {
        bool is_there = false;
        must_succeed(detectHeadStage(probe_slot, port, &is_there), "the box does not tell who is there");
        if (is_there) {
            ports.push_back(port);
        }
    }
    return ports;
}

// The device that has no probes first: the box streams from this call on, and its first packets are a few
// milliseconds away.
void Opened_Box::start() const {
    must_succeed(arm(adc_slot), "the ADC inputs cannot be made ready");
    must_succeed(arm(probe_slot), "the probes cannot be made ready");
    must_succeed(setSWTrigger(adc_slot), "the ADC inputs do not start");
    must_succeed(setSWTrigger(probe_slot), "the probes do not start");
}

void Opened_Box::stop() const {
    arm(adc_slot);
    arm(probe_slot);
}

} // namespace Pelgar::ORBE::recorder
