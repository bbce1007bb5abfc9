#include "Box_Environment.h"

#include <memory>

namespace Pelgar::ORBE::test {

namespace {

std::unique_ptr<Box_Driver> g_driver;

class Box_Environment : public testing::Environment {
public:
    void SetUp() override { g_driver = std::make_unique<Box_Driver>(); }

    void TearDown() override { g_driver.reset(); }
};

[[maybe_unused]] const auto* const g_environment = testing::AddGlobalTestEnvironment(new Box_Environment);

} // namespace

Box_Driver& box_driver() {
    return *g_driver;
}

Box_Fixture::Box_Fixture() {
    box_driver().set_present_boxes(0);
    for (unsigned box = 0; box < BOX_COUNT; ++box) {
        box_driver().reset(box);
    }
}

} // namespace Pelgar::ORBE::test
