#include "resources/Resource_Directory.h"

namespace Pelgar::ORBE {

std::string default_resource_directory() {
    return ORBE_RESOURCE_DIR;
}

} // namespace Pelgar::ORBE
