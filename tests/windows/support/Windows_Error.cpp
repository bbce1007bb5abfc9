#include "Windows_Error.h"

#include <system_error>

namespace Pelgar::ORBE::test {

void require(bool succeeded, const char* text) {
    if (!succeeded) {
        throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), text);
    }
}

} // namespace Pelgar::ORBE::test
