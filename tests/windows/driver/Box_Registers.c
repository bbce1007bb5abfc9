/* Stand-in for the XDMA driver: the register BAR. A section takes its place, of which the driver keeps a view
 * and every process that asks gets one. */
#include "Box.h"

/* The registers that opening the box looks at. */
#define CONFIGURATION 0x0000u
#define CONFIGURATION_STREAMS 0xFu
#define BUILD_STAMP 0x0008u
#define PLL_LOCKS 0x0200u
#define SIGNATURE 0x0208u
#define TEMPERATURE 0x0A00u
#define EFUSE 0x1600u

#define BUILD_STAMP_19_04_2024 0x9A300000u
#define ALL_PORTS_LOCKED 0xFu
#define NEUROPIXELS_DESIGN_WITH_FOUR_PORTS 0x4E500040u
#define TEMPERATURE_25_CELSIUS 0x9770u
#define EFUSE_USER_WORD 0x0BE00001u

static NTSTATUS map_view(HANDLE section, HANDLE process, PVOID* address) {
    SIZE_T size = 0;
    *address = NULL;
    return ZwMapViewOfSection(section, process, address, 0, 0, NULL, &size, ViewShare, 0, PAGE_READWRITE);
}

NTSTATUS box_create_registers(struct Box_Registers* registers) {
    LARGE_INTEGER size;
    OBJECT_ATTRIBUTES attributes;
    PVOID view = NULL;
    NTSTATUS status;
    size.QuadPart = BOX_REGISTER_BYTES;
    InitializeObjectAttributes(&attributes, NULL, 0, NULL, NULL);
    status = ZwCreateSection(&registers->section, SECTION_ALL_ACCESS, &attributes, &size, PAGE_READWRITE,
                             SEC_COMMIT, NULL);
    if (NT_SUCCESS(status)) {
        status = map_view(registers->section, ZwCurrentProcess(), &view);
    }
    registers->words = view;
    return status;
}

void box_power_up_registers(struct Box_Registers* registers) {
    unsigned i;
    for (i = 0; i < BOX_REGISTER_BYTES / sizeof(ULONG); ++i) {
        registers->words[i] = 0;
    }
    registers->words[BUILD_STAMP / sizeof(ULONG)] = BUILD_STAMP_19_04_2024;
    registers->words[PLL_LOCKS / sizeof(ULONG)] = ALL_PORTS_LOCKED;
    registers->words[SIGNATURE / sizeof(ULONG)] = NEUROPIXELS_DESIGN_WITH_FOUR_PORTS;
    registers->words[TEMPERATURE / sizeof(ULONG)] = TEMPERATURE_25_CELSIUS;
    registers->words[EFUSE / sizeof(ULONG)] = EFUSE_USER_WORD;
}

/* Gives the calling process a view. */
NTSTATUS box_map_registers(const struct Box_Registers* registers, PVOID* address) {
    CLIENT_ID caller = {0};
    OBJECT_ATTRIBUTES attributes;
    HANDLE process = NULL;
    NTSTATUS status;
    caller.UniqueProcess = PsGetCurrentProcessId();
    InitializeObjectAttributes(&attributes, NULL, 0, NULL, NULL);
    status = ZwOpenProcess(&process, PROCESS_ALL_ACCESS, &attributes, &caller);
    if (NT_SUCCESS(status)) {
        status = map_view(registers->section, process, address);
        ZwClose(process);
    }
    return status;
}

int box_streams_are_on(const struct Box_Registers* registers) {
    return (registers->words[CONFIGURATION / sizeof(ULONG)] & CONFIGURATION_STREAMS) != 0;
}

void box_delete_registers(struct Box_Registers* registers) {
    if (registers->words != NULL) {
        ZwUnmapViewOfSection(ZwCurrentProcess(), (PVOID)registers->words);
        registers->words = NULL;
    }
    if (registers->section != NULL) {
        ZwClose(registers->section);
        registers->section = NULL;
    }
}
