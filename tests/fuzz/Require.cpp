#include "Require.h"

#include <unistd.h>

#include <cstdlib>
#include <string>

namespace Pelgar::ORBE::test {

// Past the standard streams, which the target may have taken over.
void require(bool condition, const char* what) {
    if (condition) {
        return;
    }
    const std::string line = std::string("mismatch: ") + what + '\n';
    [[maybe_unused]] const auto written = write(STDERR_FILENO, line.data(), line.size());
    std::abort();
}

} // namespace Pelgar::ORBE::test
