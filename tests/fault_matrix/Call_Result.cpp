#include "Call_Result.h"

#include <NeuropixAPI.h>

#include <array>
#include <exception>

namespace Pelgar::ORBE::test {

namespace {

std::string last_error() {
    std::array<char, 512> text{};
    Neuropixels::getLastErrorMessage(text.data(), text.size());
    return text.data();
}

} // namespace

Call_Result make_call(const Host_Call_To_Make& call) {
    const std::string name = "`" + call.name + "` ";
    try {
        const int result = call.make();
        if (result == Neuropixels::SUCCESS) {
            return {true, "0", {}};
        }
        return {false, name + std::to_string(result), last_error()};
    } catch (const std::exception& exception) {
        return {false, name + "throws \"" + exception.what() + "\"", last_error()};
    }
}

} // namespace Pelgar::ORBE::test
