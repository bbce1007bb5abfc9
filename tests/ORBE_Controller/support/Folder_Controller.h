// Test support, Linux: the back-end of the driver, with its modules, on devices in another folder than the
// system's.
#pragma once

#include "back_ends/CP_Linux_ORBE_Controller.h"

#include <string>

namespace Pelgar::ORBE::test {

class Folder_Controller final : public CP_Linux_ORBE_Controller {
public:
    explicit Folder_Controller(const std::string& folder) : CP_Linux_ORBE_Controller(folder) {
        create_modules();
    }
};

} // namespace Pelgar::ORBE::test
