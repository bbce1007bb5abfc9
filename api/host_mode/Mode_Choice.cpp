#include "host_mode/Mode_Choice.h"

#include "adapter/Adapter_State.h"
#include "adapter/Last_Error.h"
#include "host_mode/Host_Mode.h"
#include "host_mode/Host_Mode_Options.h"
#include "modes/Current_Mode.h"

#include <loguru.hpp>

#include <mutex>
#include <stdexcept>

namespace Pelgar::ORBE::npoe_adapter {

bool choose_mode() {
    try {
        const auto options = read_host_mode_switch();
        A_Mode& mode = options ? static_cast<A_Mode&>(host_mode()) : box_mode();
        const bool stays = &mode == &current_mode() && (!options || *options == host_mode().options());
        if (!stays) {
            current_mode().turn_readers_away();
            if (options) {
                keep_last_errors();
                host_mode().configure(*options);
            }
            put_in_force(mode);
        }
        return true;
    } catch (const std::invalid_argument& exception) {
        LOG_F(ERROR, "%s : %s", host_mode_switch, exception.what());
        return false;
    }
}

bool choose_mode_while_closed() {
    if (current_controller() != nullptr) {
        return true;
    }
    const std::lock_guard opening(*g_opening_mutex);
    return current_controller() != nullptr || choose_mode();
}

} // namespace Pelgar::ORBE::npoe_adapter
