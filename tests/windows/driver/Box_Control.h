/* Stand-in for the XDMA driver: what it shares with the tests. The tests open the control device and send it
 * requests; every request names one of the boxes by its number. */
#pragma once

#define BOX_COUNT 2
#define BOX_REGISTER_BYTES 0x10000u

/* The name of the kernel service, and of the control device below "\\.\". */
#define BOX_SERVICE L"OrbeBox"
#define BOX_CONTROL_DEVICE L"OrbeBoxControl"

/* The interface class of the XDMA driver, and the path of a box below "\\?\" without its number, class and
 * closing text: the path of box 1 is "root#orbebox#0001#{...}". */
#define BOX_INTERFACE_CLASS L"{74c7e4a9-6d5d-4a70-bc0d-20691dff9e9d}"
#define BOX_DEVICE_0 L"root#orbebox#0000#" BOX_INTERFACE_CLASS
#define BOX_DEVICE_1 L"root#orbebox#0001#" BOX_INTERFACE_CLASS

/* The one request of the XDMA driver's own: maps the registers. Answers with their address and their size. */
#define BOX_MAP_BAR 0x22001Cu

/* Requests to the control device, all buffered (the two low bits are 0). */
#define BOX_RESET 0x222400u          /* Box_Request: the box as it is after power-up */
#define BOX_SET 0x222404u            /* Box_Request: index is the setting */
#define BOX_GET 0x222408u            /* Box_Request: index is the setting; answers the value, 8 bytes */
#define BOX_WRITE_REGISTER 0x22240Cu /* Box_Request: index is the address */
#define BOX_READ_REGISTER 0x222410u  /* Box_Request: index is the address; answers the value, 8 bytes */
#define BOX_PLAY 0x222414u           /* Box_Play_Request: the stream starts at the recording's beginning */

enum Box_Setting {
    BOX_HAS_USER_FILE = 0,   /* 0: "user" cannot be opened; 1 after power-up */
    BOX_HAS_STREAM_FILE = 1, /* 0: "c2h_0" cannot be opened; 1 after power-up */
    BOX_MAP_STATUS = 2,      /* the status that mapping fails with; 0 after power-up */
    BOX_READ_STATUS = 3,     /* the status that reads fail with; 0 after power-up */
    BOX_READ_LIMIT = 4,      /* the bytes that one read brings at most; all after power-up */
    BOX_READS = 5,           /* counts the reads; 0 after power-up */
    BOX_OPEN_FILES = 6,      /* counts the handles to "user" and "c2h_0"; outlasts power-up */
    BOX_SETTING_COUNT = 7
};

struct Box_Request {
    unsigned box;
    unsigned index;
    unsigned long long value;
};

struct Box_Play_Request {
    unsigned box;
    wchar_t path[300]; /* of the recording, as the kernel names it, with a closing zero */
};
