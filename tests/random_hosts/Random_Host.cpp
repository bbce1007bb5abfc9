#include "Random_Host.h"

#include <NeuropixAPI.h>

#include <algorithm>
#include <array>
#include <exception>
#include <string_view>
#include <thread>

namespace Pelgar::ORBE::test {

namespace {

constexpr std::chrono::milliseconds blocking{300};
constexpr std::chrono::minutes limit{2};

constexpr std::array<std::string_view, 17> frequent_names{"getDeviceList",
                                                          "openBS",
                                                          "openPort",
                                                          "openProbe",
                                                          "init",
                                                          "setGain",
                                                          "selectElectrode",
                                                          "writeProbeConfiguration",
                                                          "setGainCalibration",
                                                          "setADCCalibration",
                                                          "setSWTrigger",
                                                          "start_acquisition",
                                                          "readElectrodeData",
                                                          "ADC_readPackets",
                                                          "getElectrodeDataFifoState",
                                                          "arm",
                                                          "stop_acquisition"};

// All that a device may have.
void close_slots() {
    for (const int slot : {0, 2, 20}) {
        Neuropixels::closeBS(slot);
    }
}

} // namespace

Random_Host::Random_Host(const Random_Host_Options& options, Random_Box& box)
    : m_options(options), m_box(box), m_functions(all_functions()) {
    if (!m_options.is_host_mode) {
        // It waits for ever behind a pump that has broken off.
        std::erase_if(m_functions, [](const Random_Function& function) {
            return function.plain_name() == "stop_acquisition";
        });
    }
    for (const Random_Function& function : m_functions) {
        if (std::ranges::find(frequent_names, function.name) != frequent_names.end()) {
            m_frequent.push_back(&function);
        }
    }
}

void Random_Host::run() {
    Hang_Watch watch(m_options.threads + 1, blocking, limit, [this] { rescue(); });
    std::vector<std::thread> threads;
    for (std::size_t thread = 0; thread < m_options.threads; ++thread) {
        threads.emplace_back([this, thread, &watch] { run_thread(thread, watch); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    static const std::string closing = "the last closeBS"; // outlives the watch
    watch.begin(m_options.threads, closing);
    close();
    watch.end(m_options.threads);
}

void Random_Host::run_thread(std::size_t thread, Hang_Watch& watch) {
    Random_Arguments arguments(m_options.seed * 1000 + thread);
    for (std::size_t i = 0; i < m_options.calls; ++i) {
        if (arguments.one_in(40)) {
            m_box.strike(arguments);
        }
        const Random_Function& function = arguments.one_in(3)
                                              ? m_functions[arguments.below(m_functions.size())]
                                              : *m_frequent[arguments.below(m_frequent.size())];
        watch.begin(thread, function.name);
        call(function, arguments);
        watch.end(thread);
    }
}

void Random_Host::call(const Random_Function& function, Random_Arguments& arguments) {
    std::unique_lock lock(m_state_mutex, std::defer_lock);
    if (!m_options.is_host_mode && function.changes_state()) {
        lock.lock();
    }
    try {
        if (function.call(arguments)) {
            ++m_successes;
        }
    } catch (const std::exception& exception) {
        const std::lock_guard exceptions(m_exceptions_mutex);
        ++m_exceptions[function.name + " : " + exception.what()];
    }
    ++m_calls;
}

// No read goes on waiting. A call that changes the state and does not come back is not waited for.
void Random_Host::rescue() {
    std::unique_lock lock(m_state_mutex, std::defer_lock);
    if (m_options.is_host_mode || lock.try_lock()) {
        close_slots();
    }
}

void Random_Host::close() {
    std::unique_lock lock(m_state_mutex, std::defer_lock);
    if (!m_options.is_host_mode) {
        lock.lock();
    }
    close_slots();
}

} // namespace Pelgar::ORBE::test
