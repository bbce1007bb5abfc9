// A host program in miniature: it knows the public header and the shared library and nothing else. It asks
// for the device, then opens the basestation on a recording that does not exist, which must be refused
// with 5.
#include <NeuropixAPI.h>

#include <cstdio>
#include <fstream>

int main() {
    Neuropixels::basestationID id{};
    const int device_count = Neuropixels::getDeviceList(&id, 1);
    if (device_count != 1 || id.platformid != Neuropixels::NPPlatform_USB || id.ID != 1) {
        std::fprintf(stderr, "getDeviceList: %d device(s), platform %d, id %d\n", device_count,
                     static_cast<int>(id.platformid), id.ID);
        return 1;
    }

    std::ofstream("ORBE_DFGMZ_ADAPTER_SIM") << "no_such_recording.bin\n";
    const int slot = 0;
    const int opened = Neuropixels::openBS(slot);
    const int closed = Neuropixels::closeBS(slot);
    if (opened != 5 || closed != Neuropixels::SUCCESS) {
        std::fprintf(stderr, "openBS on a missing recording: %d, closeBS: %d\n", opened, closed);
        return 1;
    }
    return 0;
}
