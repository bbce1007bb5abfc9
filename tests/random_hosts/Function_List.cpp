#include "Function_List.h"

#include <NeuropixAPI_C.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

namespace Pelgar::ORBE::test {

namespace {

// The parameters of "(int slotID, int (*progress)(size_t byteswritten))", each as it is written.
std::vector<std::string> parted(std::string_view parameters) {
    std::vector<std::string> parts;
    std::string part;
    int depth = 0;
    for (const char letter : parameters) {
        depth += letter == '(' ? 1 : letter == ')' ? -1 : 0;
        if ((letter == '(' && depth == 1) || depth == 0 || (letter == ',' && depth == 1)) {
            if (letter != '(' && !part.empty()) {
                parts.push_back(std::exchange(part, {}));
            }
            continue;
        }
        part += letter;
    }
    return parts;
}

template <typename Result, typename... Parameters, std::size_t... Index>
bool call_with(Result (*function)(Parameters...), const std::vector<std::string>& parameters,
               Random_Arguments& arguments, std::index_sequence<Index...> /*unused*/) {
    arguments.begin_call();
    // In braces, so that they are made in order.
    const std::tuple<Parameters...> values{arguments.make<Parameters>(parameters.at(Index))...};
    if constexpr (std::is_void_v<Result>) {
        std::apply(function, values);
        return true;
    } else if constexpr (std::is_integral_v<Result> || std::is_enum_v<Result>) {
        return std::apply(function, values) == Neuropixels::SUCCESS;
    } else {
        static_cast<void>(std::apply(function, values));
        return true;
    }
}

template <typename Result, typename... Parameters>
Random_Function random_function(const char* name, const char* parameters, Result (*function)(Parameters...)) {
    return {name, [function, parts = parted(parameters)](Random_Arguments& arguments) {
                return call_with(function, parts, arguments, std::index_sequence_for<Parameters...>{});
            }};
}

} // namespace

std::string_view Random_Function::plain_name() const {
    constexpr std::string_view prefix = "np_";
    std::string_view plain = name;
    if (plain.starts_with(prefix)) {
        plain.remove_prefix(prefix.size());
    }
    return plain;
}

bool Random_Function::changes_state() const {
    constexpr std::array<std::string_view, 6> names{"openBS",           "closeBS", "arm", "start_acquisition",
                                                    "stop_acquisition", "bistPSB"};
    return std::ranges::find(names, plain_name()) != names.end();
}

std::vector<Random_Function> all_functions() {
    return {
#define NP_FUNCTION(result, name, parameters, arguments)                                                     \
    random_function(#name, #parameters, &Neuropixels::name),                                                 \
        random_function("np_" #name, #parameters, &::np_##name),
#define NP_ADDITION(result, name, parameters, arguments) NP_FUNCTION(result, name, parameters, arguments)
#define NP_TEXT_ADDITION(result, name, parameters, arguments)                                                \
    random_function(#name, #parameters, &Neuropixels::name),                                                 \
        random_function("np_" #name, "(char* text, size_t len)", &::np_##name),
#include <NeuropixAPI_Functions.inc>
    };
}

} // namespace Pelgar::ORBE::test
