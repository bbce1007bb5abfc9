#include "Service.h"

#include "Windows_Error.h"

#include <algorithm>
#include <chrono>
#include <initializer_list>
#include <memory>
#include <system_error>
#include <thread>
#include <type_traits>
#include <utility>

namespace Pelgar::ORBE::test {

namespace {

struct Close_Service {
    void operator()(SC_HANDLE handle) const { CloseServiceHandle(handle); }
};

using Service_Handle = std::unique_ptr<std::remove_pointer_t<SC_HANDLE>, Close_Service>;

constexpr auto poll_wait = std::chrono::milliseconds(20);
constexpr auto longest_wait = std::chrono::seconds(90);

// Makes the call until it succeeds, as long as it fails with one of these errors. The service manager has
// them while it is busy: with its own services when they have just begun, with the end of an earlier
// service.
template <typename Call>
bool insist(Call&& call, std::initializer_list<DWORD> passing_errors) {
    const auto end = std::chrono::steady_clock::now() + longest_wait;
    while (!call()) {
        const DWORD error = GetLastError();
        if (std::ranges::find(passing_errors, error) == passing_errors.end() ||
            std::chrono::steady_clock::now() > end) {
            SetLastError(error);
            return false;
        }
        std::this_thread::sleep_for(poll_wait);
    }
    return true;
}

Service_Handle open_manager() {
    Service_Handle manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ALL_ACCESS));
    require(manager != nullptr, "the service manager cannot be opened");
    return manager;
}

bool wait_for_state(const Service_Handle& service, DWORD state) {
    return insist(
        [&] {
            SERVICE_STATUS status{};
            if (QueryServiceStatus(service.get(), &status) == FALSE) {
                return false;
            }
            SetLastError(ERROR_SERVICE_NOT_ACTIVE);
            return status.dwCurrentState == state;
        },
        {ERROR_SERVICE_NOT_ACTIVE});
}

void remove_service(const std::wstring& name) {
    const Service_Handle manager = open_manager();
    const Service_Handle service(OpenServiceW(manager.get(), name.c_str(), SERVICE_ALL_ACCESS));
    if (service == nullptr) {
        return;
    }
    SERVICE_STATUS status{};
    if (insist([&] { return ControlService(service.get(), SERVICE_CONTROL_STOP, &status) != FALSE; },
               {ERROR_SERVICE_DATABASE_LOCKED, ERROR_SERVICE_CANNOT_ACCEPT_CTRL})) {
        wait_for_state(service, SERVICE_STOPPED);
    }
    DeleteService(service.get());
}

void install_and_start(const std::wstring& name, const std::wstring& driver_file) {
    const Service_Handle manager = open_manager();
    Service_Handle service;
    require(insist(
                [&] {
                    remove_service(name);
                    service.reset(
                        CreateServiceW(manager.get(), name.c_str(), name.c_str(), SERVICE_ALL_ACCESS,
                                       SERVICE_KERNEL_DRIVER, SERVICE_DEMAND_START, SERVICE_ERROR_NORMAL,
                                       driver_file.c_str(), nullptr, nullptr, nullptr, nullptr, nullptr));
                    return service != nullptr;
                },
                {ERROR_SERVICE_DATABASE_LOCKED, ERROR_SERVICE_EXISTS, ERROR_SERVICE_MARKED_FOR_DELETE}),
            "the service cannot be installed");
    require(insist(
                [&] {
                    return StartServiceW(service.get(), 0, nullptr) != FALSE ||
                           GetLastError() == ERROR_SERVICE_ALREADY_RUNNING;
                },
                {ERROR_SERVICE_DATABASE_LOCKED, ERROR_SERVICE_REQUEST_TIMEOUT}),
            "the service cannot be started");
    require(wait_for_state(service, SERVICE_RUNNING), "the service does not run");
}

} // namespace

Service::Service(std::wstring name, const std::filesystem::path& driver_file) : m_name(std::move(name)) {
    try {
        install_and_start(m_name, std::filesystem::absolute(driver_file).wstring());
    } catch (...) {
        remove_service(m_name);
        throw;
    }
}

Service::~Service() {
    try {
        remove_service(m_name);
    } catch (const std::system_error&) {
        // Left for the next one of this name to remove.
    }
}

} // namespace Pelgar::ORBE::test
