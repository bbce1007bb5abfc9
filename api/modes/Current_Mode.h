// Layer: façade. The mode in force, and the forms in which entry points ask it. Any thread; the operations on
// a probe block while another one runs.
#pragma once

#include "adapter/Adapter_State.h"
#include "modes/A_Mode.h"

#include <mutex>
#include <stdexcept>

namespace Pelgar::ORBE::npoe_adapter {

// The box's own way.
A_Mode& box_mode();

// The box's own way until another mode is put in force.
A_Mode& current_mode();

// `mode` must live as long as the process: a host's thread may be in it at any time.
void put_in_force(A_Mode& mode);

// Passes the result of an entry point through the mode. Made at the beginning of the call.
class Result_Answer {
public:
    explicit Result_Answer(const char* name) : m_name(name), m_errors_before(error_count_of_this_thread()) {}

    Neuropixels::NP_ErrorCode operator()(Neuropixels::NP_ErrorCode result) const {
        const bool is_explained = error_count_of_this_thread() != m_errors_before;
        return current_mode().answer(m_name, result, is_explained);
    }

private:
    const char* m_name;
    unsigned m_errors_before;
};

// As `forward_over_i2c` (controller -> bool), for a port of the API in a slot of the API.
template <typename Operation>
Neuropixels::NP_ErrorCode forward_to_port(const char* name, int slotID, int portID, Operation operation) {
    const Result_Answer answer(name);
    A_Mode& mode = current_mode();
    if (const auto refused = mode.check_port(slotID, portID); refused != Neuropixels::SUCCESS) {
        return answer(refused);
    }
    auto result = Neuropixels::SUCCESS;
    const auto forwarded = forward_over_i2c(name, [&](auto& controller) {
        result = mode.check_link(controller, slotID, portID);
        return result != Neuropixels::SUCCESS || operation(controller);
    });
    return answer(forwarded != Neuropixels::SUCCESS ? forwarded : result);
}

} // namespace Pelgar::ORBE::npoe_adapter
