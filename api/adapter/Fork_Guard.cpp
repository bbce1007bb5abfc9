#include "adapter/Fork_Guard.h"

#include "adapter/Adapter_State.h"
#include "common/Relaxed.h"

#if !defined(_WIN32)
#include <pthread.h>
#endif

namespace Pelgar::ORBE::npoe_adapter {

namespace {

Relaxed<bool> g_basestation_is_a_parents{false};

#if !defined(_WIN32)

// The only thread of a new process. What the parent's other threads were doing to these objects will never be
// finished here, so that none of them is looked into or torn down.
void begin_anew_in_child() {
    if (*g_controller) {
        g_basestation_is_a_parents = true;
    }
    g_opening_mutex.begin_anew();
    g_objects_mutex.begin_anew();
    g_i2c_mutex.begin_anew();
    g_stream_mutex.begin_anew();
    g_controller.begin_anew();
    g_np_converters.begin_anew();
    g_rhd_converter.begin_anew();
    g_pump_mutex.begin_anew();
    g_pump_thread.begin_anew();
    g_acquisition_running = false;
    g_stop_requested = false;
    g_pump_ended = false;
}

#endif

} // namespace

void guard_forks() {
#if !defined(_WIN32)
    [[maybe_unused]] static const int registered = pthread_atfork(nullptr, nullptr, begin_anew_in_child);
#endif
}

bool basestation_is_a_parents() {
    return g_basestation_is_a_parents;
}

} // namespace Pelgar::ORBE::npoe_adapter
