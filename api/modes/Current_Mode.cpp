#include "modes/Current_Mode.h"

#include "common/Never_Destroyed.h"
#include "modes/Box_Mode.h"

#include <atomic>

namespace Pelgar::ORBE::npoe_adapter {

namespace {

Never_Destroyed<Box_Mode> g_box_mode;
std::atomic<A_Mode*> g_mode{nullptr};

} // namespace

A_Mode& box_mode() {
    return *g_box_mode;
}

A_Mode& current_mode() {
    A_Mode* const mode = g_mode.load(std::memory_order_acquire);
    return mode != nullptr ? *mode : *g_box_mode;
}

void put_in_force(A_Mode& mode) {
    g_mode.store(&mode, std::memory_order_release);
}

} // namespace Pelgar::ORBE::npoe_adapter
