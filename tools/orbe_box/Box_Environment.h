// Program orbe-box. What the program takes from outside: where its box and its user's answers come from, and
// how long it waits for the box. Tests put a modelled box and a written answer in their places.
#pragma once

#include "controller/C_ORBE_Controller_Library.h"

#include <chrono>
#include <functional>
#include <istream>
#include <memory>

namespace Pelgar::ORBE::tools {

struct Box_Environment {
    std::function<std::unique_ptr<ORBE_Controller_Library>(bool simulation)> make_controller;
    std::istream& answers;
    // Self tests take seconds; the longest, with a box that first reboots, about a minute.
    std::chrono::milliseconds self_test_limit = std::chrono::minutes(3);
};

} // namespace Pelgar::ORBE::tools
