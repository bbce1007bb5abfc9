/* plain_host EXPECTATION: a host in C, which knows the plain header and the shared library and nothing else.
 * It opens the basestation on the recording that the switch file in its directory names, streams it and
 * compares every packet with the expectation file (../host/Host_Road_Expectation.h). Exits with 0 when all
 * are equal. */
#include "All_Twins.h"

#include <NeuropixAPI_C.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

enum { slot = 0, dock = 0, ports = 4, adc_channels = 12 };

struct expectation_head {
    uint64_t magic;
    uint32_t electrode_packets[ports];
    uint32_t adc_packets;
    uint32_t unused;
};

struct expected_adc_packet {
    PacketInfo info;
    int16_t samples[adc_channels];
};

static int complain(const char* what, long number) {
    char error[256];
    np_getLastErrorMessage(error, sizeof error);
    fprintf(stderr, "plain_host: %s (%ld); last error of the library: \"%s\"\n", what, number, error);
    return 1;
}

/* Reads the next `size` bytes of the expectation and compares. */
static int equals(FILE* expectation, const void* received, size_t size) {
    static char expected[sizeof(electrodePacket)];
    return size <= sizeof expected && fread(expected, 1, size, expectation) == size &&
           memcmp(expected, received, size) == 0;
}

static int compare_port(FILE* expectation, int port, uint32_t count) {
    static electrodePacket packet;
    uint32_t i = 0;
    for (; i < count; ++i) {
        int received = -1;
        if (np_readElectrodeData(slot, port, dock, &packet, &received, 1) != SUCCESS || received != 1) {
            return complain("np_readElectrodeData, packets read", received);
        }
        if (!equals(expectation, &packet, sizeof packet)) {
            return complain("an electrode packet differs, number", (long)i);
        }
    }
    return 0;
}

static int compare_adc(FILE* expectation, uint32_t count) {
    uint32_t i = 0;
    for (; i < count; ++i) {
        struct expected_adc_packet packet;
        int received = -1;
        if (np_ADC_readPackets(slot, &packet.info, packet.samples, adc_channels, 1, &received) != SUCCESS ||
            received != 1) {
            return complain("np_ADC_readPackets, packets read", received);
        }
        if (!equals(expectation, &packet, sizeof packet)) {
            return complain("an ADC packet differs, number", (long)i);
        }
    }
    return 0;
}

/* The texts of the design and the number of ports, which C gets in ways of its own. */
static int ask_for_design(void) {
    char label[16] = "";
    char date[16] = "";
    uint8_t count = 0;
    if (np_bs_get_fpga_design_label(label, sizeof label) != SUCCESS || strlen(label) != 8) {
        return complain("np_bs_get_fpga_design_label, length", (long)strlen(label));
    }
    if (np_bs_get_fpga_design_build_date(date, sizeof date) != SUCCESS || strlen(date) != 10) {
        return complain("np_bs_get_fpga_design_build_date, length", (long)strlen(date));
    }
    if (np_get_available_port_capability(slot, &count) != SUCCESS || count == 0) {
        return complain("np_get_available_port_capability", count);
    }
    return 0;
}

static int stream(FILE* expectation) {
    struct expectation_head head;
    int status = 0;
    int port = 1;
    if (fread(&head, sizeof head, 1, expectation) != 1) {
        return complain("the expectation has no head", 0);
    }
    if (np_start_acquisition(slot, 1) != SUCCESS) {
        return complain("np_start_acquisition", 0);
    }
    for (; port <= ports && status == 0; ++port) {
        if (head.electrode_packets[port - 1] == 0) {
            return complain("nothing is expected of a port", port);
        }
        status = compare_port(expectation, port, head.electrode_packets[port - 1]);
    }
    return status != 0 ? status : compare_adc(expectation, head.adc_packets);
}

int main(int argc, char** argv) {
    basestationID device;
    FILE* expectation = NULL;
    int status = 0;
    if (argc != 2 || (expectation = fopen(argv[1], "rb")) == NULL) {
        fprintf(stderr, "usage: plain_host EXPECTATION\n");
        return 2;
    }
    if (count_of_null_twins() != 0) {
        return complain("twins without an address", count_of_null_twins());
    }
    if (np_getDeviceList(&device, 1) != 1 || device.platformid != NPPlatform_USB || device.ID != 1) {
        return complain("np_getDeviceList", device.ID);
    }
    if (np_openBS(slot) != SUCCESS) {
        return complain("np_openBS", 0);
    }
    status = ask_for_design();
    if (status == 0) {
        status = stream(expectation);
    }
    fclose(expectation);
    if (np_closeBS(slot) != SUCCESS) {
        return complain("np_closeBS", 0);
    }
    return status;
}
