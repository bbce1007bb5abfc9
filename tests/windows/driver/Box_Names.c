/* Stand-in for the XDMA driver: the names under which its devices are opened. The real driver answers for
 * every name below its device; here the path of the device is a directory of the object manager, and each
 * file in it a link to a device object of its own. A file that must not open has no link. */
#include "Box.h"

/* The kernel has it, the header has not. */
NTSYSAPI NTSTATUS NTAPI ZwCreateSymbolicLinkObject(HANDLE* link, ACCESS_MASK access,
                                                   OBJECT_ATTRIBUTES* attributes, UNICODE_STRING* target);

static const WCHAR* const directory_names[BOX_COUNT] = {L"\\DosDevices\\" BOX_DEVICE_0,
                                                        L"\\DosDevices\\" BOX_DEVICE_1};
static const WCHAR* const user_devices[BOX_COUNT] = {L"\\Device\\OrbeBox0User", L"\\Device\\OrbeBox1User"};
static const WCHAR* const stream_devices[BOX_COUNT] = {L"\\Device\\OrbeBox0Stream",
                                                       L"\\Device\\OrbeBox1Stream"};

static void close(HANDLE* handle) {
    if (*handle != NULL) {
        ZwClose(*handle);
        *handle = NULL;
    }
}

static NTSTATUS create_link(HANDLE* link, HANDLE directory, const WCHAR* name, const WCHAR* target) {
    UNICODE_STRING link_name;
    UNICODE_STRING target_name;
    OBJECT_ATTRIBUTES attributes;
    RtlInitUnicodeString(&link_name, name);
    RtlInitUnicodeString(&target_name, target);
    InitializeObjectAttributes(&attributes, &link_name, OBJ_CASE_INSENSITIVE, directory, NULL);
    return ZwCreateSymbolicLinkObject(link, SYMBOLIC_LINK_ALL_ACCESS, &attributes, &target_name);
}

/* A link lives as long as the handle to it. */
static NTSTATUS show(HANDLE* link, HANDLE directory, const WCHAR* name, const WCHAR* target, int present) {
    if (!present) {
        close(link);
        return STATUS_SUCCESS;
    }
    return *link != NULL ? STATUS_SUCCESS : create_link(link, directory, name, target);
}

NTSTATUS box_create_names(struct Box_Names* names, unsigned number) {
    UNICODE_STRING name;
    OBJECT_ATTRIBUTES attributes;
    NTSTATUS status;
    RtlInitUnicodeString(&name, directory_names[number]);
    InitializeObjectAttributes(&attributes, &name, OBJ_CASE_INSENSITIVE, NULL, NULL);
    status = ZwCreateDirectoryObject(&names->directory, DIRECTORY_ALL_ACCESS, &attributes);
    if (NT_SUCCESS(status)) {
        status = box_show_user_file(names, number, 1);
    }
    if (NT_SUCCESS(status)) {
        status = box_show_stream_file(names, number, 1);
    }
    return status;
}

NTSTATUS box_show_user_file(struct Box_Names* names, unsigned number, int present) {
    return show(&names->user, names->directory, L"user", user_devices[number], present);
}

NTSTATUS box_show_stream_file(struct Box_Names* names, unsigned number, int present) {
    return show(&names->stream, names->directory, L"c2h_0", stream_devices[number], present);
}

void box_delete_names(struct Box_Names* names) {
    close(&names->user);
    close(&names->stream);
    close(&names->directory);
}
