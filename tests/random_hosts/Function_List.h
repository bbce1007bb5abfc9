// Test support, random hosts. Every exported function by both of its names, to be called with random
// arguments.
#pragma once

#include "Random_Arguments.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace Pelgar::ORBE::test {

struct Random_Function {
    std::string name;
    // Calls it, and answers whether it did what it was asked for; what it throws is thrown.
    std::function<bool(Random_Arguments&)> call;

    // Without the beginning of the C twins' names.
    std::string_view plain_name() const;

    // Whether it begins or ends an acquisition or an opening. The box's own way leaves it to hosts to make
    // such calls one after the other.
    bool changes_state() const;
};

std::vector<Random_Function> all_functions();

} // namespace Pelgar::ORBE::test
