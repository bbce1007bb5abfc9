#include "common/Checked_Index.h"

#include <stdexcept>

namespace Pelgar::ORBE {

void throw_invalid_array_subscript() {
    throw std::out_of_range("invalid array<T, N> subscript");
}

} // namespace Pelgar::ORBE
