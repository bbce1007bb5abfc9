// Layer: device controller. Where the library's data files are installed; fixed when the library is built.
// Any thread; never blocks.
#pragma once

#include "common/Export.h"

#include <string>

namespace Pelgar::ORBE {

// The directory of the build setting ORBE_RESOURCE_DIR, without a trailing separator.
ORBE_EXPORT std::string default_resource_directory();

} // namespace Pelgar::ORBE
