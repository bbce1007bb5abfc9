#include "Expect.h"

#include "Output.h"

namespace Pelgar::ORBE::host {

namespace {

bool g_everything_was_good = true;

} // namespace

void expect(bool good, const char* function, const char* what_is_wrong) {
    if (good) {
        return;
    }
    g_everything_was_good = false;
    print(function);
    print(": ");
    print(what_is_wrong);
    print("\n");
}

bool everything_was_good() {
    return g_everything_was_good;
}

} // namespace Pelgar::ORBE::host
