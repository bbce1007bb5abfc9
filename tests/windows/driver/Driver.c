/* Stand-in for the XDMA driver, as a kernel driver of its own: entry, devices, and the routines that the
 * system calls for each request, one at a time. Wine loads it; it knows two boxes whether or not they are
 * entered in the registry of devices. */
#include "Box.h"

DRIVER_INITIALIZE DriverEntry;

static struct Box boxes[BOX_COUNT];

static NTSTATUS complete(IRP* irp, NTSTATUS status, ULONG_PTR information) {
    irp->IoStatus.Status = status;
    irp->IoStatus.Information = information;
    IoCompleteRequest(irp, IO_NO_INCREMENT);
    return status;
}

static NTSTATUS count_files(const DEVICE_OBJECT* device, IRP* irp, int change) {
    const struct Box_Device* const target = device->DeviceExtension;
    if (target->box != NULL) {
        target->box->settings[BOX_OPEN_FILES] += (ULONGLONG)change;
    }
    return complete(irp, STATUS_SUCCESS, 0);
}

static NTSTATUS WINAPI open(DEVICE_OBJECT* device, IRP* irp) {
    return count_files(device, irp, 1);
}

/* Wine tells of the last handle's end here alone, not by a clean-up before. */
static NTSTATUS WINAPI close(DEVICE_OBJECT* device, IRP* irp) {
    return count_files(device, irp, -1);
}

static NTSTATUS WINAPI clean_up(DEVICE_OBJECT* device, IRP* irp) {
    return count_files(device, irp, 0);
}

static NTSTATUS WINAPI read(DEVICE_OBJECT* device, IRP* irp) {
    const struct Box_Device* const target = device->DeviceExtension;
    const IO_STACK_LOCATION* const call = IoGetCurrentIrpStackLocation(irp);
    ULONG count = 0;
    NTSTATUS status;
    if (target->file != BOX_STREAM_FILE) {
        return complete(irp, STATUS_INVALID_DEVICE_REQUEST, 0);
    }
    status = box_read(target->box, irp->AssociatedIrp.SystemBuffer, call->Parameters.Read.Length, &count);
    return complete(irp, status, count);
}

/* The answer holds the address in the calling process and the size, eight bytes each. */
static NTSTATUS map_bar(const struct Box* box, void* buffer, ULONG out_size, ULONG_PTR* answered) {
    ULONGLONG* const bar = buffer;
    PVOID address = NULL;
    NTSTATUS status = (NTSTATUS)box->settings[BOX_MAP_STATUS];
    if (!NT_SUCCESS(status)) {
        return status;
    }
    if (out_size < 2 * sizeof(*bar)) {
        return STATUS_BUFFER_TOO_SMALL;
    }
    status = box_map_registers(&box->registers, &address);
    if (NT_SUCCESS(status)) {
        bar[0] = (ULONG_PTR)address;
        bar[1] = BOX_REGISTER_BYTES;
        *answered = 2 * sizeof(*bar);
    }
    return status;
}

static NTSTATUS WINAPI device_control(DEVICE_OBJECT* device, IRP* irp) {
    const struct Box_Device* const target = device->DeviceExtension;
    const IO_STACK_LOCATION* const call = IoGetCurrentIrpStackLocation(irp);
    const ULONG code = call->Parameters.DeviceIoControl.IoControlCode;
    const ULONG in_size = call->Parameters.DeviceIoControl.InputBufferLength;
    const ULONG out_size = call->Parameters.DeviceIoControl.OutputBufferLength;
    void* const buffer = irp->AssociatedIrp.SystemBuffer;
    NTSTATUS status = STATUS_INVALID_DEVICE_REQUEST;
    ULONG_PTR answered = 0;
    if (target->file == BOX_CONTROL_FILE) {
        status = box_control(boxes, code, buffer, in_size, out_size, &answered);
    } else if (target->file == BOX_USER_FILE && code == BOX_MAP_BAR) {
        status = map_bar(target->box, buffer, out_size, &answered);
    }
    return complete(irp, status, answered);
}

static NTSTATUS create_device(DRIVER_OBJECT* driver, const WCHAR* name, struct Box* box, enum Box_File file) {
    UNICODE_STRING device_name;
    DEVICE_OBJECT* device = NULL;
    NTSTATUS status;
    RtlInitUnicodeString(&device_name, name);
    status = IoCreateDevice(driver, sizeof(struct Box_Device), &device_name, FILE_DEVICE_UNKNOWN, 0, FALSE,
                            &device);
    if (NT_SUCCESS(status)) {
        struct Box_Device* const target = device->DeviceExtension;
        target->box = box;
        target->file = file;
        device->Flags |= DO_BUFFERED_IO;
        device->Flags &= ~(ULONG)DO_DEVICE_INITIALIZING;
    }
    return status;
}

static NTSTATUS create_box(DRIVER_OBJECT* driver, unsigned number, const WCHAR* user, const WCHAR* stream) {
    struct Box* const box = &boxes[number];
    struct Box_Request power_up = {number, 0, 0};
    ULONG_PTR answered = 0;
    NTSTATUS status = create_device(driver, user, box, BOX_USER_FILE);
    if (NT_SUCCESS(status)) {
        status = create_device(driver, stream, box, BOX_STREAM_FILE);
    }
    if (NT_SUCCESS(status)) {
        status = box_create_names(&box->names, number);
    }
    if (NT_SUCCESS(status)) {
        status = box_create_registers(&box->registers);
    }
    if (NT_SUCCESS(status)) {
        status = box_control(boxes, BOX_RESET, &power_up, sizeof(power_up), 0, &answered);
    }
    return status;
}

static NTSTATUS create_control(DRIVER_OBJECT* driver) {
    UNICODE_STRING name;
    UNICODE_STRING target;
    NTSTATUS status = create_device(driver, L"\\Device\\" BOX_CONTROL_DEVICE, NULL, BOX_CONTROL_FILE);
    if (!NT_SUCCESS(status)) {
        return status;
    }
    RtlInitUnicodeString(&name, L"\\DosDevices\\" BOX_CONTROL_DEVICE);
    RtlInitUnicodeString(&target, L"\\Device\\" BOX_CONTROL_DEVICE);
    return IoCreateSymbolicLink(&name, &target);
}

static void WINAPI unload(DRIVER_OBJECT* driver) {
    UNICODE_STRING name;
    unsigned i;
    RtlInitUnicodeString(&name, L"\\DosDevices\\" BOX_CONTROL_DEVICE);
    IoDeleteSymbolicLink(&name);
    for (i = 0; i < BOX_COUNT; ++i) {
        box_stop_playing(&boxes[i].stream);
        box_delete_registers(&boxes[i].registers);
        box_delete_names(&boxes[i].names);
    }
    while (driver->DeviceObject != NULL) {
        IoDeleteDevice(driver->DeviceObject);
    }
}

NTSTATUS WINAPI DriverEntry(DRIVER_OBJECT* driver, UNICODE_STRING* registry_path) {
    NTSTATUS status;
    (void)registry_path;
    driver->DriverUnload = unload;
    driver->MajorFunction[IRP_MJ_CREATE] = open;
    driver->MajorFunction[IRP_MJ_CLEANUP] = clean_up;
    driver->MajorFunction[IRP_MJ_CLOSE] = close;
    driver->MajorFunction[IRP_MJ_READ] = read;
    driver->MajorFunction[IRP_MJ_DEVICE_CONTROL] = device_control;
    status = create_control(driver);
    if (NT_SUCCESS(status)) {
        status = create_box(driver, 0, L"\\Device\\OrbeBox0User", L"\\Device\\OrbeBox0Stream");
    }
    if (NT_SUCCESS(status)) {
        status = create_box(driver, 1, L"\\Device\\OrbeBox1User", L"\\Device\\OrbeBox1Stream");
    }
    if (!NT_SUCCESS(status)) {
        unload(driver);
    }
    return status;
}
