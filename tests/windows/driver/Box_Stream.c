/* Stand-in for the XDMA driver: the card-to-host stream. Reads bring the bytes of a recording. Behind its end
 * they bring nothing while the streams are on, as from a box that has not got its next rows yet; once the
 * streams are off they bring zeros, so that a reader that waits for a full buffer gets away. */
#include "Box.h"

/* How long a read behind the end waits for the streams to be switched off. Short, because all requests of the
 * driver wait with it. In units of 100 ns, from now. */
#define WAIT_AT_END (-10 * 1000)

void box_stop_playing(struct Box_Stream* stream) {
    if (stream->recording != NULL) {
        ZwClose(stream->recording);
        stream->recording = NULL;
    }
    stream->position = 0;
    stream->size = 0;
}

NTSTATUS box_play(struct Box_Stream* stream, const WCHAR* path) {
    UNICODE_STRING name;
    OBJECT_ATTRIBUTES attributes;
    IO_STATUS_BLOCK result;
    FILE_STANDARD_INFORMATION information;
    NTSTATUS status;
    box_stop_playing(stream);
    RtlInitUnicodeString(&name, path);
    InitializeObjectAttributes(&attributes, &name, OBJ_CASE_INSENSITIVE, NULL, NULL);
    status = ZwCreateFile(&stream->recording, GENERIC_READ | SYNCHRONIZE, &attributes, &result, NULL,
                          FILE_ATTRIBUTE_NORMAL, FILE_SHARE_READ | FILE_SHARE_WRITE, FILE_OPEN,
                          FILE_SYNCHRONOUS_IO_NONALERT, NULL, 0);
    if (NT_SUCCESS(status)) {
        status = ZwQueryInformationFile(stream->recording, &result, &information, sizeof(information),
                                        FileStandardInformation);
    }
    if (NT_SUCCESS(status)) {
        stream->size = (ULONGLONG)information.EndOfFile.QuadPart;
    }
    return status;
}

static NTSTATUS read_recording(struct Box_Stream* stream, void* buffer, ULONG size, ULONG* count) {
    IO_STATUS_BLOCK result;
    LARGE_INTEGER position;
    NTSTATUS status;
    position.QuadPart = (LONGLONG)stream->position;
    status = ZwReadFile(stream->recording, NULL, NULL, NULL, &result, buffer, size, &position, NULL);
    if (NT_SUCCESS(status)) {
        *count = (ULONG)result.Information;
        stream->position += *count;
    }
    return status;
}

static void read_behind_end(const struct Box_Registers* registers, void* buffer, ULONG size, ULONG* count) {
    LARGE_INTEGER wait;
    wait.QuadPart = WAIT_AT_END;
    if (box_streams_are_on(registers)) {
        KeDelayExecutionThread(KernelMode, FALSE, &wait);
    } else {
        RtlZeroMemory(buffer, size);
        *count = size;
    }
}

NTSTATUS box_read(struct Box* box, void* buffer, ULONG size, ULONG* count) {
    const ULONGLONG limit = box->settings[BOX_READ_LIMIT];
    NTSTATUS status = (NTSTATUS)box->settings[BOX_READ_STATUS];
    ++box->settings[BOX_READS];
    *count = 0;
    if (size > limit) {
        size = (ULONG)limit;
    }
    if (!NT_SUCCESS(status) || size == 0) {
        return status;
    }
    if (box->stream.position < box->stream.size) {
        return read_recording(&box->stream, buffer, size, count);
    }
    read_behind_end(&box->registers, buffer, size, count);
    return STATUS_SUCCESS;
}
