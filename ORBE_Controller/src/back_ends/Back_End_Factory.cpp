// Layer: device controller. The factory that `A_ORBE_Controller` declares stands here, beside the kinds that
// it makes, so that the class itself knows none of them.
#include "back_ends/CP_Sim_ORBE_Controller.h"
#include "connection/A_ORBE_Controller.h"

#if defined(_WIN32)
#include "back_ends/CP_Win_ORBE_Controller.h"
#elif defined(__linux__)
#include "back_ends/CP_Linux_ORBE_Controller.h"
#else
#include <stdexcept>
#endif

namespace Pelgar::ORBE {

namespace {

std::shared_ptr<A_ORBE_Controller> make_hardware_back_end() {
#if defined(_WIN32)
    return std::make_shared<CP_Win_ORBE_Controller>();
#elif defined(__linux__)
    return std::make_shared<CP_Linux_ORBE_Controller>();
#else
    throw std::runtime_error("no driver for the box on this platform");
#endif
}

} // namespace

std::shared_ptr<A_ORBE_Controller> A_ORBE_Controller::get_instance(bool simulation) {
    const std::shared_ptr<A_ORBE_Controller> controller =
        simulation ? std::make_shared<CP_Sim_ORBE_Controller>() : make_hardware_back_end();
    controller->create_modules();
    return controller;
}

} // namespace Pelgar::ORBE
