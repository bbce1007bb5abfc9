#include "Box_Environment.h"

#include "Windows_Error.h"

#include <array>
#include <memory>

namespace Pelgar::ORBE::test {

namespace {

std::unique_ptr<Box_Driver> g_driver;

// The driver is built into the same directory as the test programs.
std::filesystem::path driver_file() {
    std::array<wchar_t, 1024> program{};
    const DWORD length = GetModuleFileNameW(nullptr, program.data(), static_cast<DWORD>(program.size()));
    require(length > 0 && length < program.size(), "the program does not know its own file");
    return std::filesystem::path(program.data()).replace_filename("orbe_box.sys");
}

class Box_Environment : public testing::Environment {
public:
    void SetUp() override { g_driver = std::make_unique<Box_Driver>(driver_file()); }

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
