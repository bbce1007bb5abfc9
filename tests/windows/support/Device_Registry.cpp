#include "Device_Registry.h"

#include "Box_Control.h"
#include "Windows_Error.h"

#include <cwchar>
#include <string>

namespace Pelgar::ORBE::test {

namespace {

constexpr const wchar_t* installed_devices = L"SYSTEM\\CurrentControlSet\\Enum\\";
constexpr const wchar_t* interface_classes = L"SYSTEM\\CurrentControlSet\\Control\\DeviceClasses\\";

std::wstring number_text(unsigned number) {
    const std::wstring digits = std::to_wstring(number);
    return std::wstring(4 - digits.size(), L'0') + digits;
}

std::wstring instance_of(unsigned number) {
    return L"ROOT\\ORBEBOX\\" + number_text(number);
}

std::wstring device_key(unsigned number) {
    return installed_devices + instance_of(number);
}

std::wstring interface_key(unsigned number) {
    return std::wstring(interface_classes) + BOX_INTERFACE_CLASS + L"\\##?#ROOT#ORBEBOX#" +
           number_text(number) + L"#" + BOX_INTERFACE_CLASS;
}

std::wstring symbolic_link(unsigned number) {
    return L"\\\\?\\root#orbebox#" + number_text(number) + L"#" + BOX_INTERFACE_CLASS;
}

// Sets a value, in a key that is made with it.
void set_value(const std::wstring& key, const wchar_t* name, DWORD type, const void* data, std::size_t size) {
    SetLastError(static_cast<DWORD>(
        RegSetKeyValueW(HKEY_LOCAL_MACHINE, key.c_str(), name, type, data, static_cast<DWORD>(size))));
    require(GetLastError() == ERROR_SUCCESS, "a value cannot be entered in the registry");
}

void set_text(const std::wstring& key, const wchar_t* name, const std::wstring& text) {
    set_value(key, name, REG_SZ, text.c_str(), (text.size() + 1) * sizeof(wchar_t));
}

void remove_key(const std::wstring& key) {
    SetLastError(static_cast<DWORD>(RegDeleteTreeW(HKEY_LOCAL_MACHINE, key.c_str())));
    require(GetLastError() == ERROR_SUCCESS || GetLastError() == ERROR_FILE_NOT_FOUND,
            "a key cannot be removed from the registry");
}

} // namespace

void enter_box(unsigned number) {
    const std::wstring interface_of_box = interface_key(number);
    const DWORD active = 1;
    set_text(device_key(number), L"ClassGUID", BOX_INTERFACE_CLASS);
    set_text(interface_of_box, L"DeviceInstance", instance_of(number));
    set_text(interface_of_box + L"\\#", L"SymbolicLink", symbolic_link(number));
    set_value(interface_of_box + L"\\#\\Control", L"Linked", REG_DWORD, &active, sizeof active);
}

void remove_box(unsigned number) {
    remove_key(interface_key(number));
    remove_key(device_key(number));
}

} // namespace Pelgar::ORBE::test
