/* Stand-in for the XDMA driver: one acquisition box. The dispatch routines of Driver.c call these functions,
 * one at a time. */
#pragma once

#include <ntddk.h>

#include "Box_Control.h"

/* What a box shows in the system's name space: a directory with the path of its device, in it the files
 * "user" and "c2h_0". */
struct Box_Names {
    HANDLE directory;
    HANDLE user;
    HANDLE stream;
};

/* The register space: memory that the driver and the library's process see both. Nothing happens on access.
 */
struct Box_Registers {
    HANDLE section;
    volatile ULONG* words; /* as the driver sees them */
};

/* The stream: the bytes of a recording, one after the other. */
struct Box_Stream {
    HANDLE recording;
    ULONGLONG position;
    ULONGLONG size;
};

struct Box {
    struct Box_Names names;
    struct Box_Registers registers;
    struct Box_Stream stream;
    ULONGLONG settings[BOX_SETTING_COUNT];
};

/* What a device object belongs to. The control device has no box. */
enum Box_File { BOX_CONTROL_FILE, BOX_USER_FILE, BOX_STREAM_FILE };

struct Box_Device {
    struct Box* box;
    enum Box_File file;
};

/* Box_Names.c */
NTSTATUS box_create_names(struct Box_Names* names, unsigned number);
NTSTATUS box_show_user_file(struct Box_Names* names, unsigned number, int present);
NTSTATUS box_show_stream_file(struct Box_Names* names, unsigned number, int present);
void box_delete_names(struct Box_Names* names);

/* Box_Registers.c */
NTSTATUS box_create_registers(struct Box_Registers* registers);
void box_power_up_registers(struct Box_Registers* registers);
NTSTATUS box_map_registers(const struct Box_Registers* registers, PVOID* address);
int box_streams_are_on(const struct Box_Registers* registers);
void box_delete_registers(struct Box_Registers* registers);

/* Box_Stream.c */
NTSTATUS box_play(struct Box_Stream* stream, const WCHAR* path);
NTSTATUS box_read(struct Box* box, void* buffer, ULONG size, ULONG* count);
void box_stop_playing(struct Box_Stream* stream);

/* Box_Requests.c */
NTSTATUS box_control(struct Box* boxes, ULONG code, void* buffer, ULONG in_size, ULONG out_size,
                     ULONG_PTR* answered);
