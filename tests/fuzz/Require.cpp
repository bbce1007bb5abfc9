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
    if (write(STDERR_FILENO, line.data(), line.size()) < 0) {
        // The abort says it too.
    }
    std::abort();
}

} // namespace Pelgar::ORBE::test
