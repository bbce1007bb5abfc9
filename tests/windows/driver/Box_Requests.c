/* Stand-in for the XDMA driver: the requests of the tests to the control device, which the real driver has
 * not. */
#include "Box.h"

static NTSTATUS change_setting(struct Box* box, unsigned number, unsigned index, ULONGLONG value) {
    if (index >= BOX_SETTING_COUNT) {
        return STATUS_INVALID_PARAMETER;
    }
    box->settings[index] = value;
    switch (index) {
    case BOX_HAS_USER_FILE:
        return box_show_user_file(&box->names, number, value != 0);
    case BOX_HAS_STREAM_FILE:
        return box_show_stream_file(&box->names, number, value != 0);
    default:
        return STATUS_SUCCESS;
    }
}

static NTSTATUS reset(struct Box* box, unsigned number) {
    const ULONGLONG power_up[BOX_SETTING_COUNT] = {1, 1, 0, 0, ~0ULL, 0, box->settings[BOX_OPEN_FILES]};
    unsigned i;
    NTSTATUS status = STATUS_SUCCESS;
    for (i = 0; i < BOX_SETTING_COUNT && NT_SUCCESS(status); ++i) {
        status = change_setting(box, number, i, power_up[i]);
    }
    box_stop_playing(&box->stream);
    box_power_up_registers(&box->registers);
    return status;
}

static NTSTATUS answer(void* buffer, ULONG out_size, ULONGLONG value, ULONG_PTR* answered) {
    if (out_size < sizeof(value)) {
        return STATUS_BUFFER_TOO_SMALL;
    }
    *(ULONGLONG*)buffer = value;
    *answered = sizeof(value);
    return STATUS_SUCCESS;
}

NTSTATUS box_control(struct Box* boxes, ULONG code, void* buffer, ULONG in_size, ULONG out_size,
                     ULONG_PTR* answered) {
    const ULONG needed = code == BOX_PLAY ? sizeof(struct Box_Play_Request) : sizeof(struct Box_Request);
    const struct Box_Request* const request = buffer;
    struct Box* box;
    unsigned index;
    if (in_size < needed || request->box >= BOX_COUNT) {
        return STATUS_INVALID_PARAMETER;
    }
    box = &boxes[request->box];
    if (code == BOX_PLAY) {
        return box_play(&box->stream, ((const struct Box_Play_Request*)buffer)->path);
    }
    index = request->index;
    switch (code) {
    case BOX_RESET:
        return reset(box, request->box);
    case BOX_SET:
        return change_setting(box, request->box, index, request->value);
    case BOX_GET:
        return index < BOX_SETTING_COUNT ? answer(buffer, out_size, box->settings[index], answered)
                                         : STATUS_INVALID_PARAMETER;
    case BOX_WRITE_REGISTER:
        if (index >= BOX_REGISTER_BYTES) {
            return STATUS_INVALID_PARAMETER;
        }
        box->registers.words[index / sizeof(ULONG)] = (ULONG)request->value;
        return STATUS_SUCCESS;
    case BOX_READ_REGISTER:
        return index < BOX_REGISTER_BYTES
                   ? answer(buffer, out_size, box->registers.words[index / sizeof(ULONG)], answered)
                   : STATUS_INVALID_PARAMETER;
    default:
        return STATUS_INVALID_DEVICE_REQUEST;
    }
}
