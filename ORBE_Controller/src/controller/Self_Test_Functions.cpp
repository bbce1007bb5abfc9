#include "controller/Self_Test_Functions.h"

#include "controller/C_ORBE_Controller_Library.h"

namespace Pelgar::ORBE {

bool execute_psb_test(ORBE_Controller_Library& controller, unsigned port, const std::string& directory) {
    return controller.m_self_tests.execute_psb_test(port, directory);
}

bool execute_bist_signal_test(ORBE_Controller_Library& controller, unsigned port,
                              const std::string& directory) {
    return controller.m_self_tests.execute_bist_signal_test(port, directory);
}

} // namespace Pelgar::ORBE
