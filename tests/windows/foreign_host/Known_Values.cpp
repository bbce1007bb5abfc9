#include "Known_Values.h"

#include "Expect.h"

#include <NeuropixAPI_C.h>

namespace Pelgar::ORBE::host {

namespace {

using namespace Neuropixels;

constexpr int slot = 0;
constexpr int port = 1;
constexpr int dock = 0;
constexpr const char* wrong = "writes something else";

bool is_text(const char* text, const char* expected) {
    while (*text != '\0' && *text == *expected) {
        ++text;
        ++expected;
    }
    return *text == *expected;
}

bool is_version(int version_major, int version_minor) {
    return version_major == 1 && version_minor == 0;
}

template <typename Function>
void look_at_version(const char* name, Function function) {
    int version_major = -1;
    int version_minor = -1;
    function(&version_major, &version_minor);
    expect(is_version(version_major, version_minor), name, wrong);
}

template <typename Function>
void look_at_text(const char* name, Function function, const char* expected) {
    char text[64] = "?";
    function(text, sizeof text);
    expect(is_text(text, expected), name, wrong);
}

template <typename Function>
void look_at_firmware(const char* name, Function function, const char* expected) {
    firmware_Info info = {};
    function(&info);
    expect(info.major == 2 && info.minor == 0 && info.build == 1 && is_text(info.name, expected), name,
           wrong);
}

template <typename Function>
void look_at_basestation(const char* name, Function function) {
    basestationID id = {NPPlatform_None, 0};
    function(&id);
    expect(id.platformid == NPPlatform_USB && id.ID == 1, name, wrong);
}

template <typename Function>
void look_at_slot(const char* name, Function function) {
    const basestationID id = {NPPlatform_USB, 1};
    int found = -1;
    expect(function(&id, &found) && found == slot, name, wrong);
}

template <typename Function>
void look_at_serial_number(const char* name, Function function) {
    std::uint64_t number = ~0ULL;
    function(&number);
    expect(number == 12345, name, wrong);
}

template <typename Function>
void look_at_error_texts(const char* name, Function function) {
    expect(is_text(function(SUCCESS), "success"), name, "answers another text");
    expect(is_text(function(FAILED), "the operation failed"), name, "answers another text");
}

} // namespace

// `leading` holds the arguments before those that `look` gives, each with its comma.
#define UNPACKED(...) __VA_ARGS__
#define BY_OWN_NAME(look, name, leading, ...)                                                                \
    look(#name, [](auto... rest) { return Neuropixels::name(UNPACKED leading rest...); } __VA_OPT__(, )      \
                    __VA_ARGS__)
#define BY_BOTH_NAMES(look, name, leading, ...)                                                              \
    BY_OWN_NAME(look, name, leading, __VA_ARGS__);                                                           \
    look("np_" #name,                                                                                        \
         [](auto... rest) { return ::np_##name(UNPACKED leading rest...); } __VA_OPT__(, ) __VA_ARGS__)

void look_at_known_values() {
    BY_BOTH_NAMES(look_at_version, getAPIVersion, ());
    BY_BOTH_NAMES(look_at_version, getBSCVersion, (slot, ));
    BY_OWN_NAME(look_at_version, getHSVersion, (slot, port, ));
    BY_OWN_NAME(look_at_version, getFlexVersion, (slot, port, dock, ));
    BY_BOTH_NAMES(look_at_text, getAPIVersionFull, (), "1.0");
    BY_BOTH_NAMES(look_at_text, readBSCPN, (slot, ), "ORBE NA");
    BY_OWN_NAME(look_at_text, readFlexPN, (slot, port, dock, ), "Pelgar ORBE Flex");
    BY_BOTH_NAMES(look_at_text, dbg_getversion_datetime, (), "");
    BY_BOTH_NAMES(look_at_serial_number, readBSCSN, (slot, ));
    BY_BOTH_NAMES(look_at_firmware, bs_getFirmwareInfo, (slot, ), "ORBE 1.0");
    BY_BOTH_NAMES(look_at_firmware, bsc_getFirmwareInfo, (slot, ), "ORBE Firmware 1.0");
    BY_BOTH_NAMES(look_at_basestation, getDeviceInfo, (slot, ));
    BY_BOTH_NAMES(look_at_slot, tryGetSlotID, ());
    BY_BOTH_NAMES(look_at_error_texts, getErrorMessage, ());
}

} // namespace Pelgar::ORBE::host
