// Test support, a program: orbe-view with the modelled box behind the library, at the box's own pace. Its
// probes send a tone, ramps and spikes on known channels, with some damage a second and a half from the
// beginning. Takes orbe-view's arguments, and on its standard input what happens to the box: "lose PORT" and
// "regain PORT", a port's link, and "close SLOT", by somebody else in the process.
#include "Box_Clock.h"
#include "View_Program.h"
#include "Virtual_Box_Controller.h"

#include <NeuropixAPI.h>
#include <adapter/Adapter_State.h>

#include <poll.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <thread>

namespace {

using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::test;

recording::Recording_Options options_of_box() {
    recording::Recording_Options options;
    for (const char* const signal : {"tone:100", "ramp:200-215", "spikes:300-310"}) {
        options.signals.push_back(recording::parse_signal_choice(signal));
    }
    // Ports send 1,950,000 rows a second, the ADC inputs 85,714.
    for (const char* const fault : {"lost-row:1@2925000", "wrong-tag:2@2925000+3", "lost-row:rhd@128571"}) {
        options.faults.push_back(recording::parse_fault(fault));
    }
    return options;
}

void obey(Virtual_Box& box, const std::string& line) {
    std::istringstream words(line);
    std::string what;
    std::size_t port = 0;
    words >> what >> port;
    if (what == "lose") {
        box.lock_at_look(port - 1, std::nullopt);
    } else if (what == "regain") {
        box.lock_at_look(port - 1, 1);
    } else if (what == "close") {
        Neuropixels::closeBS(static_cast<int>(port));
    }
}

// Until nobody says anything any more, or the program is to end.
void listen(Virtual_Box& box, const std::atomic<bool>& ends) {
    constexpr int patience_ms = 50;
    std::string said;
    pollfd input{STDIN_FILENO, POLLIN, 0};
    while (!ends) {
        if (::poll(&input, 1, patience_ms) <= 0) {
            continue;
        }
        std::array<char, 100> bytes;
        const ssize_t count = ::read(STDIN_FILENO, bytes.data(), bytes.size());
        if (count <= 0) {
            return;
        }
        said.append(bytes.data(), static_cast<std::size_t>(count));
        for (auto end = said.find('\n'); end != std::string::npos; end = said.find('\n')) {
            obey(box, said.substr(0, end));
            said.erase(0, end + 1);
        }
    }
}

} // namespace

int main(int argc, char** argv) {
    const auto box = std::make_shared<Virtual_Box>(options_of_box());
    *npoe_adapter::g_controller_factory = [box](bool) {
        return std::make_shared<ORBE_Controller_Library>(std::make_shared<Virtual_Box_Controller>(box),
                                                         false);
    };
    int exit_code = 0;
    {
        const Box_Clock clock(box->stream());
        std::atomic<bool> ends{false};
        std::thread listener([&] { listen(*box, ends); });
        exit_code = view::run_view_program(argc, argv);
        ends = true;
        listener.join();
    }
    *npoe_adapter::g_controller_factory = {};
    return exit_code;
}
