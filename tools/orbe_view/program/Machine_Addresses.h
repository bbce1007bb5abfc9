// Program orbe-view. The addresses by which other machines can reach this one. Any thread; asks the system,
// which answers at once.
#pragma once

#include <string>
#include <vector>

namespace Pelgar::ORBE::view {

// Whether the address, in numbers, stands for all that the machine has; nobody can be asked by it.
bool is_any_address(const std::string& address);

// Those of the kind of `any`, "0.0.0.0" or "::", in numbers, but for the machine's own and for those that
// hold in one network only, which browsers do not take. As the system orders them; empty when there is none.
std::vector<std::string> machine_addresses(const std::string& any);

} // namespace Pelgar::ORBE::view
