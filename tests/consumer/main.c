/* The same host in C. */
#include <NeuropixAPI_C.h>

#include <stdio.h>

int main(void) {
    basestationID id = {NPPlatform_None, 0};
    const int device_count = np_getDeviceList(&id, 1);
    FILE* switch_file = fopen("ORBE_DFGMZ_ADAPTER_SIM", "w");
    NP_ErrorCode opened;
    NP_ErrorCode closed;
    if (device_count != 1 || id.platformid != NPPlatform_USB || id.ID != 1) {
        fprintf(stderr, "np_getDeviceList: %d device(s), platform %d, id %d\n", device_count,
                (int)id.platformid, id.ID);
        return 1;
    }
    if (switch_file == NULL || fputs("no_such_recording.bin\n", switch_file) < 0 ||
        fclose(switch_file) != 0) {
        fprintf(stderr, "the switch file cannot be written\n");
        return 1;
    }
    opened = np_openBS(0);
    closed = np_closeBS(0);
    if (opened != VERSION_MISMATCH || closed != SUCCESS) {
        fprintf(stderr, "np_openBS on a missing recording: %d, np_closeBS: %d\n", (int)opened, (int)closed);
        return 1;
    }
    return 0;
}
