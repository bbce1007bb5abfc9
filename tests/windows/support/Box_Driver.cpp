#include "Box_Driver.h"

#include "Device_Registry.h"
#include "Program_Directory.h"
#include "Windows_Error.h"

#include <algorithm>
#include <iterator>
#include <string>

namespace Pelgar::ORBE::test {

Box_Driver::Box_Driver()
    : m_service(BOX_SERVICE, program_directory() / "orbe_box.sys"),
      m_control(std::wstring(L"\\\\.\\") + BOX_CONTROL_DEVICE) {
    require(m_control.is_open(), "the control device cannot be opened");
    set_present_boxes(0);
}

Box_Driver::~Box_Driver() {
    set_present_boxes(0);
}

void Box_Driver::set_present_boxes(unsigned count) {
    for (unsigned box = 0; box < BOX_COUNT; ++box) {
        if (box < count) {
            enter_box(box);
        } else {
            remove_box(box);
        }
    }
}

void Box_Driver::reset(unsigned box) const {
    const Box_Request request{box, 0, 0};
    send(BOX_RESET, &request, sizeof request);
}

void Box_Driver::set(unsigned box, Box_Setting setting, std::uint64_t value) const {
    const Box_Request request{box, static_cast<unsigned>(setting), value};
    send(BOX_SET, &request, sizeof request);
}

std::uint64_t Box_Driver::get(unsigned box, Box_Setting setting) const {
    return ask(BOX_GET, box, static_cast<std::uint32_t>(setting));
}

void Box_Driver::write_register(unsigned box, std::uint32_t address, std::uint32_t value) const {
    const Box_Request request{box, address, value};
    send(BOX_WRITE_REGISTER, &request, sizeof request);
}

std::uint32_t Box_Driver::read_register(unsigned box, std::uint32_t address) const {
    return static_cast<std::uint32_t>(ask(BOX_READ_REGISTER, box, address));
}

void Box_Driver::play(unsigned box, const std::filesystem::path& recording) const {
    const std::wstring path = L"\\??\\" + std::filesystem::absolute(recording).wstring();
    Box_Play_Request request{};
    request.box = box;
    require(path.size() < std::size(request.path), "the path of the recording is too long");
    std::copy(path.begin(), path.end(), request.path);
    send(BOX_PLAY, &request, sizeof request);
}

void Box_Driver::send(std::uint32_t code, const void* request, std::uint32_t size) const {
    DWORD answered = 0;
    require(DeviceIoControl(m_control.get(), code, const_cast<void*>(request), size, nullptr, 0, &answered,
                            nullptr) != FALSE,
            "the driver refuses a request");
}

std::uint64_t Box_Driver::ask(std::uint32_t code, unsigned box, std::uint32_t index) const {
    Box_Request request{box, index, 0};
    std::uint64_t value = 0;
    DWORD answered = 0;
    require(DeviceIoControl(m_control.get(), code, &request, sizeof request, &value, sizeof value, &answered,
                            nullptr) != FALSE,
            "the driver does not answer");
    return value;
}

} // namespace Pelgar::ORBE::test
