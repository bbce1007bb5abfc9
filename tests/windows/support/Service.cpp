#include "Service.h"

#include "Windows_Error.h"

#include <chrono>
#include <memory>
#include <thread>
#include <type_traits>
#include <utility>

namespace Pelgar::ORBE::test {

namespace {

struct Close_Service {
    void operator()(SC_HANDLE handle) const { CloseServiceHandle(handle); }
};

using Service_Handle = std::unique_ptr<std::remove_pointer_t<SC_HANDLE>, Close_Service>;

constexpr auto state_poll_wait = std::chrono::milliseconds(10);
constexpr int most_state_polls = 1000;

Service_Handle open_manager() {
    Service_Handle manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ALL_ACCESS));
    require(manager != nullptr, "the service manager cannot be opened");
    return manager;
}

DWORD state_of(const Service_Handle& service) {
    SERVICE_STATUS status{};
    require(QueryServiceStatus(service.get(), &status) != FALSE, "the service tells no state");
    return status.dwCurrentState;
}

bool wait_for_state(const Service_Handle& service, DWORD state) {
    for (int poll = 0; poll < most_state_polls; ++poll) {
        if (state_of(service) == state) {
            return true;
        }
        std::this_thread::sleep_for(state_poll_wait);
    }
    return false;
}

} // namespace

Service::Service(std::wstring name, const std::filesystem::path& driver_file) : m_name(std::move(name)) {
    remove();
    const Service_Handle manager = open_manager();
    const std::wstring path = std::filesystem::absolute(driver_file).wstring();
    const Service_Handle service(CreateServiceW(manager.get(), m_name.c_str(), m_name.c_str(),
                                                SERVICE_ALL_ACCESS, SERVICE_KERNEL_DRIVER,
                                                SERVICE_DEMAND_START, SERVICE_ERROR_NORMAL, path.c_str(),
                                                nullptr, nullptr, nullptr, nullptr, nullptr));
    require(service != nullptr, "the service cannot be installed");
    require(StartServiceW(service.get(), 0, nullptr) != FALSE, "the service cannot be started");
    require(wait_for_state(service, SERVICE_RUNNING), "the service does not run");
}

Service::~Service() {
    remove();
}

void Service::remove() const {
    const Service_Handle manager = open_manager();
    const Service_Handle service(OpenServiceW(manager.get(), m_name.c_str(), SERVICE_ALL_ACCESS));
    if (service == nullptr) {
        return;
    }
    SERVICE_STATUS status{};
    if (ControlService(service.get(), SERVICE_CONTROL_STOP, &status) != FALSE) {
        wait_for_state(service, SERVICE_STOPPED);
    }
    DeleteService(service.get());
}

} // namespace Pelgar::ORBE::test
