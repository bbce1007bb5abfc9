#include "Foreign_Calls.h"

#include "Answers.h"
#include "Call_With_Samples.h"
#include "Expect.h"
#include "Kernel32.h"
#include "Known_Values.h"
#include "Output.h"

#include <NeuropixAPI_C.h>

namespace Pelgar::ORBE::host {

namespace {

using Any_Function = void (*)();

struct Import {
    const char* name;
    Any_Function address;
};

// The DLL or program that an address lies in, or null.
Kernel32_Handle module_of(Any_Function address) {
    Kernel32_Handle found = nullptr;
    return GetModuleHandleExA(module_by_address, reinterpret_cast<const void*>(address), &found) != 0
               ? found
               : nullptr;
}

// A loader may start a program whose imports are not all there, with something of its own in the place of
// what is missing: every address has to lie in the DLL.
void look_at_imports() {
    const Import imports[] = {
#define NP_FUNCTION(result, name, parameters, arguments)                                                     \
    {#name, reinterpret_cast<Any_Function>(&Neuropixels::name)},                                             \
        {"np_" #name, reinterpret_cast<Any_Function>(&::np_##name)},
#define NP_ADDITION(result, name, parameters, arguments) NP_FUNCTION(result, name, parameters, arguments)
#include <NeuropixAPI_Functions.inc>
    };
    const Kernel32_Handle dll = module_of(imports[0].address);
    expect(dll != nullptr && dll != module_of(reinterpret_cast<Any_Function>(&look_at_imports)),
           imports[0].name, "not imported from a DLL");
    long long count = 0;
    for (const Import& import : imports) {
        expect(module_of(import.address) == dll, import.name, "not imported from the DLL");
        ++count;
    }
    print(count);
    print(" functions imported\n");
}

template <typename Result, typename... Parameters>
void try_out(const char* name, Result (*function)(Parameters...), const Answer& answer) {
    if (answer.result == not_called) {
        return;
    }
    const Outcome outcome = call_with_samples(function);
    expect(outcome.result == answer.result, name, "answers something else");
    expect(answer.may_write || !outcome.wrote, name, "writes to its caller");
    expect(call_with_nulls(function) == answer.result, name, "answers something else to null pointers");
}

// Each compiler has a string of its own, so that these can be imported but not called.
template <typename... Parameters>
void try_out(const char* /*name*/, std::string (* /*function*/)(Parameters...), const Answer& /*answer*/) {}

} // namespace

namespace answers::of_functions {

void call_all() {
#define NP_FUNCTION(result, name, parameters, arguments)                                                     \
    try_out(#name, &Neuropixels::name, name);                                                                \
    try_out("np_" #name, &::np_##name, name);
#define NP_FUNCTION_OWN_TWIN(result, name, parameters, arguments)                                            \
    try_out(#name, &Neuropixels::name, name);                                                                \
    try_out("np_" #name, &::np_##name, logged_only);
#define NP_ADDITION(result, name, parameters, arguments) NP_FUNCTION(result, name, parameters, arguments)
#include <NeuropixAPI_Functions.inc>
}

} // namespace answers::of_functions

bool run_foreign_calls() {
    look_at_imports();
    if (!everything_was_good()) {
        return false;
    }
    answers::of_functions::call_all();
    look_at_known_values();
    return everything_was_good();
}

} // namespace Pelgar::ORBE::host
