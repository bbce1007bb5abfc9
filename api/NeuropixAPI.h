// The Neuropixels API, version 3, as this library presents it: one basestation in slot 0 with four probe
// ports, numbered 1 to 4, and the auxiliary ADC inputs of the box's RHD headstage.
//
// Errors: functions that return NP_ErrorCode answer SUCCESS (0) when the call was carried out and FAILED (1)
// when the operation on the box failed or no basestation is open; openBS alone answers 5 when the box or the
// recording cannot be brought up. Functions under "Not supported" are there so that a host that imports them
// starts: they are logged, write nothing and answer NOTSUPPORTED (0xFE). Null output pointers are skipped.
//
// Seven functions throw std::out_of_range("invalid array<T, N> subscript") for a port outside 1..4:
// selectElectrode, setGain, getGain, setReference, setAPCornerFrequency, readElectrodeData and
// getElectrodeDataFifoState. start_acquisition throws std::system_error when the system has no thread to
// give. Nothing else throws but std::bad_alloc. A caller that cannot catch, such as one in C, ends by an
// exception.
//
// What is said below is the box's own behaviour. With the file ORBE_HOST_MODE in the working directory it is
// presented as published acquisition programs expect it instead: docs/hosts.md.
//
// NeuropixAPI_Functions.inc lists all functions; NeuropixAPI_C.h declares them once more for hosts that look
// them up by their plain names.
#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <string>

#if defined(_WIN32)
#if defined(ORBE_BUILDING_LIBRARY)
#define NP_EXPORT __declspec(dllexport)
#elif defined(ORBE_STATIC)
#define NP_EXPORT
#else
#define NP_EXPORT __declspec(dllimport)
#endif
#else
#define NP_EXPORT __attribute__((visibility("default")))
#endif

#define NP1_PROBE_CHANNEL_COUNT 384
#define NP1_PROBE_SUPERFRAMESIZE 12
#define NP1_PROBE_ADC_COUNT 32

#define ELECTRODEPACKET_STATUS_TRIGGER (1 << 0)
#define ELECTRODEPACKET_STATUS_LFP (1 << 1)
#define ELECTRODEPACKET_STATUS_ERR_COUNT (1 << 2)
#define ELECTRODEPACKET_STATUS_ERR_SERDES (1 << 3)
#define ELECTRODEPACKET_STATUS_ERR_LOCK (1 << 4)
#define ELECTRODEPACKET_STATUS_ERR_POP (1 << 5)
#define ELECTRODEPACKET_STATUS_SYNC (1 << 6)
#define ELECTRODEPACKET_STATUS_ERR_SYNC (1 << 7)

namespace Neuropixels {

// ---- Enumerations ---------------------------------------------------------------------------------------

enum NP_ErrorCode {
    SUCCESS = 0,
    FAILED = 1,
    ALREADY_OPEN = 2,
    NOT_OPEN = 3,
    IIC_ERROR = 4,
    VERSION_MISMATCH = 5,
    PARAMETER_INVALID = 6,
    UART_ACK_ERROR = 7,
    TIMEOUT = 8,
    WRONG_CHANNEL = 9,
    WRONG_BANK = 10,
    WRONG_REF = 11,
    WRONG_INTREF = 12,
    CSV_READ_ERROR = 13,
    BIST_ERROR = 14,
    FILE_OPEN_ERROR = 15,
    READBACK_ERROR = 16,
    READBACK_ERROR_FLEX = 17,
    READBACK_ERROR_HS = 18,
    READBACK_ERROR_BSC = 19,
    TIMESTAMPNOTFOUND = 20,
    FILE_IO_ERR = 21,
    OUTOFMEMORY = 22,
    LINK_IO_ERROR = 23,
    NO_LOCK = 24,
    WRONG_AP = 25,
    WRONG_LFP = 26,
    ERROR_SR_CHAIN_1 = 27,
    ERROR_SR_CHAIN_2 = 28,
    ERROR_SR_CHAIN_3 = 29,
    IO_ERROR = 30,
    NO_SLOT = 31,
    WRONG_SLOT = 32,
    WRONG_PORT = 33,
    STREAM_EOF = 34,
    HDRERR_MAGIC = 35,
    HDRERR_CRC = 36,
    WRONG_PROBESN = 37,
    PROGRAMMINGABORTED = 39,
    VALUE_INVALID = 40,
    WRONG_DOCK_ID = 41,
    INVALID_ARGUMENT = 42,
    NO_BSCONNECT = 43,
    NO_LINK = 44,
    NO_FLEX = 45,
    NO_PROBE = 46,
    NO_HST = 47,
    WRONG_ADC = 48,
    WRONG_SHANK = 49,
    UNKNOWN_STREAMSOURCE = 50,
    ILLEGAL_HANDLE = 51,
    OBJECT_MISMATCH = 52,
    WRONG_DACCHANNEL = 53,
    WRONG_ADCCHANNEL = 54,
    NODATA = 55,
    PROGRAMMING_FAILED = 56,
    NO_IMU = 57,
    NOTSUPPORTED = 0xFE,
    NOTIMPLEMENTED = 0xFF
};

enum NPPlatformID_t { NPPlatform_None = 0, NPPlatform_PXI = 1, NPPlatform_USB = 2, NPPlatform_ALL = 3 };

// Electrode banks as a bit mask.
enum electrodebanks_t {
    None = 0,
    BankA = 1 << 0,
    BankB = 1 << 1,
    BankC = 1 << 2,
    BankD = 1 << 3,
    BankE = 1 << 4,
    BankF = 1 << 5,
    BankG = 1 << 6,
    BankH = 1 << 7,
    BankI = 1 << 8,
    BankJ = 1 << 9,
    BankK = 1 << 10,
    BankL = 1 << 11,
    BankM = 1 << 12,
    BankN = 1 << 13,
    BankO = 1 << 14,
    BankP = 1 << 15,
    BankQ = 1 << 16
};

enum streamsource_t { SourceDefault = 0, SourceAP = 0, SourceLFP = 1 };

enum probe_opmode_t { RECORDING = 0, CALIBRATION = 1, DIGITAL_TEST = 2 };

enum testinputmode_t { PIXEL_MODE = 0, CHANNEL_MODE = 1, NO_TEST_MODE = 2, ADC_MODE = 3 };

enum channelreference_t { EXT_REF = 0, TIP_REF = 1, INT_REF = 2, GND_REF = 3, NONE_REF = 0xFF };

enum columnpattern_t { INNER = 0, OUTER = 1, ALL = 2 };

// Switch matrix values carry their class in bits 31..24: inputs 0x01, outputs 0x02, sync sources 0x03.
enum syncsource_t {
    SyncSource_None = 0x03000000,
    SyncSource_SMA = SyncSource_None + 1,
    SyncSource_Clock = SyncSource_None + 2
};

enum switchmatrixinput_t {
    SM_Input_None = 0x01000000,
    SM_Input_SWTrigger1 = SM_Input_None + 1,
    SM_Input_SWTrigger2 = SM_Input_None + 2,
    SM_Input_SMA = SM_Input_None + 5,
    SM_Input_SMA1 = SM_Input_None + 6,
    SM_Input_PXI0 = SM_Input_None + 0x10,
    SM_Input_PXI1 = SM_Input_None + 0x11,
    SM_Input_PXI2 = SM_Input_None + 0x12,
    SM_Input_PXI3 = SM_Input_None + 0x13,
    SM_Input_PXI4 = SM_Input_None + 0x14,
    SM_Input_PXI5 = SM_Input_None + 0x15,
    SM_Input_PXI6 = SM_Input_None + 0x16,
    SM_Input_PXISYNC = SM_Input_None + 0x17,
    SM_Input_ADC0 = SM_Input_None + 0x20,
    SM_Input_ADC1 = SM_Input_None + 0x21,
    SM_Input_ADC2 = SM_Input_None + 0x22,
    SM_Input_ADC3 = SM_Input_None + 0x23,
    SM_Input_ADC4 = SM_Input_None + 0x24,
    SM_Input_ADC5 = SM_Input_None + 0x25,
    SM_Input_ADC6 = SM_Input_None + 0x26,
    SM_Input_ADC7 = SM_Input_None + 0x27,
    SM_Input_ADC8 = SM_Input_None + 0x28,
    SM_Input_ADC9 = SM_Input_None + 0x29,
    SM_Input_ADC10 = SM_Input_None + 0x3A,
    SM_Input_ADC11 = SM_Input_None + 0x3B,
    SM_Input_ADC12 = SM_Input_None + 0x3C,
    SM_Input_ADC13 = SM_Input_None + 0x3D,
    SM_Input_ADC14 = SM_Input_None + 0x3E,
    SM_Input_ADC15 = SM_Input_None + 0x3F,
    SM_Input_SyncClk = SM_Input_None + 0x40,
    SM_Input_TimeStampClk = SM_Input_None + 0x41,
    SM_Input_ADCClk = SM_Input_None + 0x42
};

enum switchmatrixoutput_t {
    SM_Output_None = 0x02000000,
    SM_Output_SMA = SM_Output_None + 1,
    SM_Output_AcquisitionTrigger = SM_Output_None + 2,
    SM_Output_StatusBit = SM_Output_None + 3,
    SM_Output_PXI0 = SM_Output_None + 4,
    SM_Output_PXI1 = SM_Output_None + 5,
    SM_Output_PXI2 = SM_Output_None + 6,
    SM_Output_PXI3 = SM_Output_None + 7,
    SM_Output_PXI4 = SM_Output_None + 8,
    SM_Output_PXI5 = SM_Output_None + 9,
    SM_Output_PXI6 = SM_Output_None + 10,
    SM_Output_PXISYNC = SM_Output_None + 11,
    SM_Output_SMA1 = SM_Output_None + 16,
    SM_Output_DAC0 = SM_Output_None + 32,
    SM_Output_DAC1 = SM_Output_None + 33,
    SM_Output_DAC2 = SM_Output_None + 34,
    SM_Output_DAC3 = SM_Output_None + 35,
    SM_Output_DAC4 = SM_Output_None + 36,
    SM_Output_DAC5 = SM_Output_None + 37,
    SM_Output_DAC6 = SM_Output_None + 38,
    SM_Output_DAC7 = SM_Output_None + 39,
    SM_Output_DAC8 = SM_Output_None + 40,
    SM_Output_DAC9 = SM_Output_None + 41,
    SM_Output_DAC10 = SM_Output_None + 42,
    SM_Output_DAC11 = SM_Output_None + 43,
    SM_Output_WavePlayerTrigger = SM_Output_None + 64
};

enum swcapflags_t { swcap_none = 0, swcap_edgeselect = 1, swcap_invert = 2 };

enum triggeredge_t { triggeredge_rising = 1, triggeredge_falling = 2 };

enum swtriggerflags_t { swtrigger_none = 1, swtrigger1 = 2, swtrigger2 = 4 };

enum np_parameter_t {
    NP_PARAM_BUFFERSIZE = 1,
    NP_PARAM_BUFFERCOUNT = 2,
    NP_PARAM_SYNCMASTER = 3,
    NP_PARAM_SYNCFREQUENCY_HZ = 4,
    NP_PARAM_SYNCPERIOD_MS = 5,
    NP_PARAM_SYNCSOURCE = 6,
    NP_PARAM_SIGNALINVERT = 7,
    NP_PARAM_IGNOREPROBESN = 0x1000,
    NP_PARAM_ALLOWMANUALPXISYNCCONFIG = 0x1001
};

enum np_datamode_t { NP_DATAMODE_OFF = 0, NP_DATAMODE_ELECTRODE = 1, NP_DATAMODE_ADC = 2 };

enum ADCrange_t { ADC_RANGE_2_5V = 0, ADC_RANGE_5V = 1, ADC_RANGE_10V = 2 };

enum wavelength_t { wavelength_blue = 0, wavelength_red = 1 };

enum slotemulatormode_t {
    NPSlotEmulatorMode_Off = 0,
    NPSlotEmulatorMode_Static = 1,
    NPSlotEmulatorMode_Linear = 2
};

enum slotemulatortype_t {
    NPSlotEmulatorType_NP2 = 0,
    NPSlotEmulatorType_NPM = 1,
    NPSlotEmulatorType_NPM2 = 2,
    NPSlotEmulatorType_Colibri = 3
};

enum portemulatormode_t {
    NPPortEmulatorMode_Off = 0,
    NPPortEmulatorMode_NP1_0 = 1,
    NPPortEmulatorMode_NHP = 2,
    NPPortEmulatorMode_NPM = 3,
    NPPortEmulatorMode_NPM2b = 4,
    NPPortEmulatorMode_NPM2c = 5,
    NPPortEmulatorMode_Colibri = 6
};

enum npsystemevent_t { DeviceFound = 1, DeviceLost = 2, DeviceMapped = 3, DeviceUnMapped = 4 };

enum accelerometer_scale_t { ACC_SCALE_2G = 0, ACC_SCALE_4G = 1, ACC_SCALE_8G = 2, ACC_SCALE_16G = 3 };

enum gyroscope_scale_t { GYRO_SCALE_250 = 0, GYRO_SCALE_500 = 1, GYRO_SCALE_1000 = 2, GYRO_SCALE_2000 = 3 };

// ---- Records --------------------------------------------------------------------------------------------

// Identifies a basestation. This library always answers {NPPlatform_USB, 1}.
struct basestationID {
    NPPlatformID_t platformid;
    int ID;
};

struct firmware_Info {
    int major;
    int minor;
    int build;
    char name[64];
};

// Of the driver for a USB link, which this box has none of.
struct driver_version {
    uint32_t major;
    uint32_t minor;
    uint32_t build;
};

// Describes one packet of auxiliary ADC samples (8 bytes).
struct PacketInfo {
    uint32_t Timestamp;
    uint16_t Status; // ADC_readPackets: TTL inputs and, in bit 6, "a TTL input has changed"
    uint16_t payloadlength;
};

// Twelve AP samples and one LFP sample of every channel of a probe (10056 bytes). Samples are raw ten-bit ADC
// values, multiplied by the probe's gain correction where one is loaded; 30 kHz in the AP band, 2.5 kHz in
// the LFP band.
struct electrodePacket {
    uint32_t timestamp[NP1_PROBE_SUPERFRAMESIZE]; // whole seconds of streamed data
    int16_t apData[NP1_PROBE_SUPERFRAMESIZE][NP1_PROBE_CHANNEL_COUNT];
    int16_t lfpData[NP1_PROBE_CHANNEL_COUNT];
    uint16_t Status[NP1_PROBE_SUPERFRAMESIZE]; // always 0
};

#pragma pack(push, 1)

typedef struct {
    uint32_t MAGIC;
    uint16_t samplecount;
    uint8_t sessionID_seqnr;
    uint8_t format;
    uint32_t timestamp;
    uint8_t status;
    uint8_t sourceid;
    uint16_t crc;
} pckhdr_t;

typedef struct {
    pckhdr_t hdr;
    uint8_t payload[1024];
} np_packet_t;

struct HardwareID {
    uint8_t version_Major;
    uint8_t version_Minor;
    uint64_t SerialNumber;
    char ProductNumber[40];
};

struct IMUPacket {
    uint32_t timestamp;
    uint8_t status;
    uint8_t packet_counter;
    uint8_t delay;
    int16_t accel_x;
    int16_t accel_y;
    int16_t accel_z;
    int16_t gyro_x;
    int16_t gyro_y;
    int16_t gyro_z;
    int16_t temperature;
    int16_t magn_x;
    int16_t magn_y;
    int16_t magn_z;
};

#pragma pack(pop)

struct np_diagstats {
    uint64_t totalbytes;
    uint32_t packetcount;
    uint32_t triggers;
    uint32_t err_badmagic;
    uint32_t err_badcrc;
    uint32_t err_count;
    uint32_t err_serdes;
    uint32_t err_lock;
    uint32_t err_pop;
    uint32_t err_sync;
};

struct np_sourcestats {
    uint32_t timestamp;
    uint32_t packetcount;
    uint32_t samplecount;
    uint32_t fifooverflow;
};

static_assert(sizeof(basestationID) == 8);
static_assert(sizeof(firmware_Info) == 76);
static_assert(sizeof(PacketInfo) == 8);
static_assert(sizeof(electrodePacket) == 10056);
static_assert(sizeof(pckhdr_t) == 16);
static_assert(sizeof(np_packet_t) == 1040);
static_assert(sizeof(HardwareID) == 50);
static_assert(sizeof(np_diagstats) == 48);
static_assert(sizeof(np_sourcestats) == 16);
static_assert(sizeof(IMUPacket) == 27);

typedef void* np_streamhandle_t;
typedef void* npcallbackhandle_t;
typedef void (*np_packetcallbackfn_t)(const np_packet_t&, const void* userdata);
typedef void (*np_systemeventcallbackfn_t)(npsystemevent_t, const void* eventdata, const void* userdata);

// ---- System ---------------------------------------------------------------------------------------------

// Writes the API version that this library presents: 1, 0.
NP_EXPORT void getAPIVersion(int* version_major, int* version_minor);

// Write a text of at most `len` characters, closing zero included, and return the number of characters of the
// whole text without the closing zero, so that a longer answer than `len - 1` tells of a cut text.
// The API version as a text: "1.0".
NP_EXPORT size_t getAPIVersionFull(char* text, size_t len);
// The last line that this library logged at the level "error" on the calling thread, whichever call it came
// from; empty when there was none. A call that succeeds leaves it, and some failures log no error: openBS,
// for one, when no port is locked.
NP_EXPORT size_t getLastErrorMessage(char* text, size_t len);

// A short text for a result, also for a number that is none. Never null; stays valid.
NP_EXPORT const char* getErrorMessage(NP_ErrorCode code);

// Fills list[0] with the box's identifier and returns the number of devices, always 1. The process's first
// call also starts the log file "ORBE.log" in the working directory.
NP_EXPORT int getDeviceList(basestationID* list, int count);

// Fills `info` with the box's identifier. Any slot is accepted.
NP_EXPORT NP_ErrorCode getDeviceInfo(int slotID, basestationID* info);

// Answers true and slot 0 for any identifier.
NP_EXPORT bool tryGetSlotID(const basestationID* id, int* slotID);

// These are accepted and logged; the box has nothing to scan, map or parametrise.
NP_EXPORT NP_ErrorCode scanBS();
NP_EXPORT NP_ErrorCode mapBS(int serialnr, int slot);
NP_EXPORT NP_ErrorCode setParameter(np_parameter_t parameter, int value);
NP_EXPORT void np_dbg_setlevel(int level);

// Not supported.
NP_EXPORT NP_ErrorCode unmapBS(int slot);
NP_EXPORT NP_ErrorCode destroyHandle(npcallbackhandle_t* handle);
NP_EXPORT NP_ErrorCode getParameter(np_parameter_t parameter, int* value);
NP_EXPORT NP_ErrorCode setParameter_double(np_parameter_t parameter, double value);
NP_EXPORT NP_ErrorCode getParameter_double(np_parameter_t parameter, double* value);

// ---- Basestation ----------------------------------------------------------------------------------------

// Opens the box, or, when the file "ORBE_DFGMZ_ADAPTER_SIM" lies in the working directory, the recorded raw
// DMA file that the first line of that file names. Opening again closes what was open. Returns 0, or 5 when
// the box or the recording cannot be brought up; what was made until then stays until closeBS, and calls that
// need no more of the box than there is go on to answer. Openings and closings that overlap are made one after
// the other; start_acquisition and stop_acquisition must not overlap them.
NP_EXPORT NP_ErrorCode openBS(int slotID);

// Stops streaming, wakes blocked readers and releases the box. Returns 0.
NP_EXPORT NP_ErrorCode closeBS(int slotID);

// Triggering is not supported: acquisition runs from start_acquisition on. Logged; returns 0.
NP_EXPORT NP_ErrorCode arm(int slotID);
NP_EXPORT NP_ErrorCode setSWTrigger(int slotID);
NP_EXPORT NP_ErrorCode setSWTriggerEx(int slotID, swtriggerflags_t triggerflags);

// The box's connectors are wired as they are. Logged; returns 0.
NP_EXPORT NP_ErrorCode switchmatrix_set(int slotID, switchmatrixoutput_t output, switchmatrixinput_t input,
                                        bool connect);

// Fixed answers: 2.0.1 "ORBE 1.0" for the basestation, 2.0.1 "ORBE Firmware 1.0" for its connect board.
NP_EXPORT NP_ErrorCode bs_getFirmwareInfo(int slotID, firmware_Info* info);
NP_EXPORT NP_ErrorCode bsc_getFirmwareInfo(int slotID, firmware_Info* info);

// The box's flash is not written from here: neither the file nor `progress` is used. Logged; returns 0.
NP_EXPORT NP_ErrorCode bs_updateFirmware(int slotID, const char* filename,
                                         int (*progress)(size_t byteswritten));
NP_EXPORT NP_ErrorCode bsc_updateFirmware(int slotID, const char* filename,
                                          int (*progress)(size_t byteswritten));

// Logged; returns 0, the count is not written.
NP_EXPORT NP_ErrorCode getHSSupportedProbeCount(int slotID, int portID, int* count);

// Not supported.
NP_EXPORT NP_ErrorCode detectBS(int slotID, bool* detected);
NP_EXPORT NP_ErrorCode setTriggerEdge(int slotID, bool rising);
NP_EXPORT NP_ErrorCode setSyncClockFrequency(int slotID, double frequency);
NP_EXPORT NP_ErrorCode setSyncClockPeriod(int slotID, int period_ms);
NP_EXPORT NP_ErrorCode checkFtdiDriver(driver_version* required, driver_version* current, bool* present,
                                       bool* right);
NP_EXPORT NP_ErrorCode checkBasestationSupported(int slotID);
NP_EXPORT NP_ErrorCode ob_getFirmwareInfo(int slotID, firmware_Info* info);
NP_EXPORT NP_ErrorCode bs_resetFirmware(int slotID);
NP_EXPORT NP_ErrorCode bsc_resetFirmware(int slotID);
NP_EXPORT NP_ErrorCode switchmatrix_get(int slotID, switchmatrixoutput_t output, switchmatrixinput_t input,
                                        bool* connected);
NP_EXPORT NP_ErrorCode switchmatrix_clear(int slotID, switchmatrixoutput_t output);
NP_EXPORT NP_ErrorCode switchmatrix_setInputInversion(int slotID, switchmatrixinput_t input, bool invert);
NP_EXPORT NP_ErrorCode switchmatrix_getInputInversion(int slotID, switchmatrixinput_t input, bool* invert);
NP_EXPORT NP_ErrorCode switchmatrix_setOutputInversion(int slotID, switchmatrixoutput_t output, bool invert);
NP_EXPORT NP_ErrorCode switchmatrix_getOutputInversion(int slotID, switchmatrixoutput_t output, bool* invert);
NP_EXPORT NP_ErrorCode switchmatrix_setOutputTriggerEdge(int slotID, switchmatrixoutput_t output,
                                                         triggeredge_t edge);
NP_EXPORT NP_ErrorCode switchmatrix_getOutputTriggerEdge(int slotID, switchmatrixoutput_t output,
                                                         triggeredge_t* edge);
NP_EXPORT NP_ErrorCode setDataMode(int slotID, int portID, np_datamode_t mode);
NP_EXPORT NP_ErrorCode getDataMode(int slotID, int portID, np_datamode_t* mode);
NP_EXPORT NP_ErrorCode bs_getTemperature(int slotID, double* temperature);
NP_EXPORT NP_ErrorCode bsc_getTemperature(int slotID, double* temperature);
NP_EXPORT NP_ErrorCode setFileStream(int slotID, const char* filename);
NP_EXPORT NP_ErrorCode enableFileStream(int slotID, bool enable);
NP_EXPORT NP_ErrorCode getBSCSupportedPortCount(int slotID, int* count);

// ---- Port and headstage --------------------------------------------------------------------------------

// Checks the headstage's link and starts it. Slots and docks are not looked at, here and below.
NP_EXPORT NP_ErrorCode openPort(int slotID, int portID);
// Logged; returns 0.
NP_EXPORT NP_ErrorCode closePort(int slotID, int portID);

// Whether the link of the port's headstage was locked when the box was opened. False for ports outside 1..4.
NP_EXPORT NP_ErrorCode detectHeadStage(int slotID, int portID, bool* detected);

// Reads the headstage's part number as a text of at most `len` characters, closing zero included. Blocks,
// with a look once a second, until a port has been opened; not without a basestation or a box, nor for ports
// outside 1..4. A headstage whose EEPROM holds none counts as
// "NP2_HS_30".
NP_EXPORT NP_ErrorCode readHSPN(int slotID, int portID, char* pn, size_t len);

// Read the probe's EEPROM: the part number as a text of at most `len` characters, closing zero included.
NP_EXPORT NP_ErrorCode readProbePN(int slotID, int portID, int dockID, char* pn, size_t len);
NP_EXPORT NP_ErrorCode readProbeSN(int slotID, int portID, int dockID, uint64_t* sn);

// Fixed answers for parts that the box does not have: version 1, 0 for the connect board, the headstage and
// the flex; the part numbers "ORBE NA" and "Pelgar ORBE Flex", at most `len` characters with the closing
// zero; the serial number 12345.
NP_EXPORT NP_ErrorCode getBSCVersion(int slotID, int* version_major, int* version_minor);
NP_EXPORT NP_ErrorCode getHSVersion(int slotID, int portID, int* version_major, int* version_minor);
NP_EXPORT NP_ErrorCode getFlexVersion(int slotID, int portID, int dockID, int* version_major,
                                      int* version_minor);
NP_EXPORT NP_ErrorCode readBSCPN(int slotID, char* pn, size_t len);
NP_EXPORT NP_ErrorCode readBSCSN(int slotID, uint64_t* sn);
NP_EXPORT NP_ErrorCode readFlexPN(int slotID, int portID, int dockID, char* pn, size_t len);

// Logged; return 0 and write nothing.
NP_EXPORT NP_ErrorCode detectFlex(int slotID, int portID, int dockID, bool* detected);
NP_EXPORT NP_ErrorCode readHSSN(int slotID, int portID, uint64_t* sn);
NP_EXPORT NP_ErrorCode setHSLed(int slotID, int portID, bool enable);

// Not supported.
NP_EXPORT NP_ErrorCode setPortSyncPattern(int slotID, int portID, uint32_t* pattern);
NP_EXPORT NP_ErrorCode getPortSyncPattern(int slotID, int portID, uint32_t* pattern);
NP_EXPORT NP_ErrorCode setVirtualHeadstage(int slotID, int portID);

// ---- Probe ----------------------------------------------------------------------------------------------

// Logged; returns 0.
NP_EXPORT NP_ErrorCode openProbe(int slotID, int portID, int dockID);
NP_EXPORT NP_ErrorCode closeProbe(int slotID, int portID, int dockID);

// Initialises the probe, in the mode whose number the file "ORBE_NP_INIT_MODE" in the working directory
// holds: 0 short, 1 full (also without the file), 2 to 4 full and a test signal.
NP_EXPORT NP_ErrorCode init(int slotID, int portID, int dockID);

// These set the configuration of a channel (0..383), which writeProbeConfiguration brings to the probe; 1
// when a value is rejected. Banks 0..2, or 255 to disconnect; gain codes 0..7; for ports outside 1..4 they
// throw std::out_of_range("invalid array<T, N> subscript").
NP_EXPORT NP_ErrorCode selectElectrode(int slotID, int portID, int dockID, int channel, int shank, int bank);
NP_EXPORT NP_ErrorCode setGain(int slotID, int portID, int dockID, int channel, int ap_gain, int lfp_gain);
NP_EXPORT NP_ErrorCode getGain(int slotID, int portID, int dockID, int channel, int* APgainselect,
                               int* LFPgainselect);
NP_EXPORT NP_ErrorCode setReference(int slotID, int portID, int dockID, int channel, int shank,
                                    channelreference_t reference, int intRefElectrodeBank);
NP_EXPORT NP_ErrorCode setAPCornerFrequency(int slotID, int portID, int dockID, int channel,
                                            bool disableHighPass);
NP_EXPORT NP_ErrorCode clear_all_electrode_to_bank_assignments(int slotID, int portID);

// Load the probe's calibration files (CSV).
NP_EXPORT NP_ErrorCode setADCCalibration(int slotID, int portID, const char* filename);
NP_EXPORT NP_ErrorCode setGainCalibration(int slotID, int portID, int dockID, const char* filename);

// Uploads the configuration, with `readcheck` twice and checked by the probe. Some thousand transactions.
NP_EXPORT NP_ErrorCode writeProbeConfiguration(int slotID, int portID, int dockID, bool readcheck);

// Logged; the operating mode follows from init and the self tests. Returns 0.
NP_EXPORT NP_ErrorCode setOPMODE(int slotID, int portID, int dockID, probe_opmode_t mode);

// Feeds the test signal into the pixels, or goes back to recording. Returns 0.
NP_EXPORT NP_ErrorCode probe_set_bist_mode(int portID, bool enable);

// Electrodes are chosen one at a time, by selectElectrode. Logged; return 0.
NP_EXPORT NP_ErrorCode selectColumnPattern(int slotID, int portID, int dockID, columnpattern_t pattern);
NP_EXPORT NP_ErrorCode selectElectrodeGroup(int slotID, int portID, int dockID, int group, int bank);
NP_EXPORT NP_ErrorCode selectElectrodeGroupMask(int slotID, int portID, int dockID, int group,
                                                electrodebanks_t banks);

// Not supported.
NP_EXPORT NP_ErrorCode setProbeSyncPattern(int slotID, int portID, int dockID, uint32_t* pattern);
NP_EXPORT NP_ErrorCode getProbeSyncPattern(int slotID, int portID, int dockID, uint32_t* pattern);
NP_EXPORT NP_ErrorCode setTestSignal(int slotID, int portID, int dockID, bool enable);
NP_EXPORT NP_ErrorCode setCALMODE(int slotID, int portID, int dockID, testinputmode_t mode);
NP_EXPORT NP_ErrorCode setREC_NRESET(int slotID, int portID, bool state);
NP_EXPORT NP_ErrorCode selectElectrodeMask(int slotID, int portID, int dockID, int channel, int shank,
                                           electrodebanks_t banks);
NP_EXPORT NP_ErrorCode setStdb(int slotID, int portID, int dockID, int channel, bool standby);

// ---- FPGA design ----------------------------------------------------------------------------------------

// Probe ports that the FPGA design offers.
NP_EXPORT NP_ErrorCode get_available_port_capability(int slotID, uint8_t* count);
// The design's signature as eight hexadecimal digits, and the day it was built as dd-mm-yyyy; empty when no
// basestation is open.
NP_EXPORT std::string bs_get_fpga_design_label();
NP_EXPORT std::string bs_get_fpga_design_build_date();

// ---- Acquisition ----------------------------------------------------------------------------------------

// Switches all four probe ports and the RHD stream on and starts the pump thread. Does nothing when
// acquisition runs already. Waits until a bistPSB that is under way is over. Returns 0. Must not be called
// while a stop_acquisition still waits for its pump thread: a second one beside it ends the process.
NP_EXPORT NP_ErrorCode start_acquisition(int slotID, int portID);

// Switches the streams off and waits for the pump thread to end. After the pump has ended by itself (end of a
// recording, failed read, a stream that openBS could not prepare) this call waits for ever; closeBS does not.
// Waits until a bistPSB or a start_acquisition that is under way is over. Returns 0.
NP_EXPORT NP_ErrorCode stop_acquisition(int slotID, int portID);

// Copies `requestedAmount` packets of the port, blocking until they are there. Returns 0; with fewer in
// `*actualAmount` when the basestation is closed, or when the next packet is there and acquisition has been
// stopped. Stopping alone does not wake a call that waits: closeBS does. Answers with none at once while no
// basestation is open. Throws std::out_of_range("invalid array<T, N> subscript") for a port outside 1..4 when
// `requestedAmount` is not 0.
NP_EXPORT NP_ErrorCode readElectrodeData(int slotID, int portID, int dockID, electrodePacket* packets,
                                         int* actualAmount, int requestedAmount);

// Packets waiting in the port's queue, and 500 minus that number (-1 when the queue is full to the brim); 0
// and 500 while no basestation is open. Throws std::out_of_range("invalid array<T, N> subscript") for a port
// outside 1..4.
NP_EXPORT NP_ErrorCode getElectrodeDataFifoState(int slotID, int portID, int dockID, int* packetsAvailable,
                                                 int* headroom);

// Probe packets come from readElectrodeData only; these are logged, return 0 and write nothing.
NP_EXPORT NP_ErrorCode readPackets(int slotID, int portID, int dockID, streamsource_t source,
                                   PacketInfo* packetInfo, int16_t* data, int channelCount, int packetCount,
                                   int* packetsRead);
NP_EXPORT NP_ErrorCode getPacketFifoStatus(int slotID, int portID, int dockID, streamsource_t source,
                                           int* packetsAvailable, int* headroom);

// Not supported.
NP_EXPORT NP_ErrorCode readPacket(int slotID, int portID, int dockID, streamsource_t source,
                                  PacketInfo* packetInfo, int16_t* data, int channelCount, int* actualRead);
NP_EXPORT NP_ErrorCode createSlotPacketCallback(int slotID, npcallbackhandle_t* handle,
                                                np_packetcallbackfn_t callback, const void* userdata);
NP_EXPORT NP_ErrorCode createProbePacketCallback(int slotID, int portID, int dockID, streamsource_t source,
                                                 npcallbackhandle_t* handle, np_packetcallbackfn_t callback,
                                                 const void* userdata);
NP_EXPORT NP_ErrorCode unpackData(const np_packet_t* packet, int16_t* data, int sampleCount, int* actualRead);

// ---- Auxiliary I/O --------------------------------------------------------------------------------------

// Copies `packetCount` packets of the RHD headstage's auxiliary inputs, blocking until they are there: twelve
// int16 a packet, of which the first eight are the ADC samples of one 30 kHz frame and the rest 0. When the
// basestation is closed, or the next packet is there and acquisition has been stopped, `*packetsRead` is 0
// and the buffers hold nothing of use. Stopping alone does not wake a call that waits: closeBS does.
// `channelCount` is not looked at. Returns 0.
NP_EXPORT NP_ErrorCode ADC_readPackets(int slotID, PacketInfo* packetInfo, int16_t* data, int channelCount,
                                       int packetCount, int* packetsRead);

// The box has no wave player and no analog outputs, and its inputs have one range. Logged; return 0.
NP_EXPORT NP_ErrorCode waveplayer_writeBuffer(int slotID, const int16_t* data, int len);
NP_EXPORT NP_ErrorCode waveplayer_arm(int slotID, bool singleshot);
NP_EXPORT NP_ErrorCode waveplayer_setSampleFrequency(int slotID, double frequency);
NP_EXPORT NP_ErrorCode ADC_setVoltageRange(int slotID, ADCrange_t range);
NP_EXPORT NP_ErrorCode DAC_enableOutput(int slotID, int channel, bool enable);
NP_EXPORT NP_ErrorCode DAC_setProbeSniffer(int slotID, int channel, int portID, int dockID, int channelnr,
                                           streamsource_t source);

// Not supported.
NP_EXPORT NP_ErrorCode waveplayer_getSampleFrequency(int slotID, double* frequency);
NP_EXPORT NP_ErrorCode ADC_read(int slotID, int channel, double* voltage);
NP_EXPORT NP_ErrorCode ADC_readComparator(int slotID, int channel, bool* state);
NP_EXPORT NP_ErrorCode ADC_readComparators(int slotID, uint32_t* states);
NP_EXPORT NP_ErrorCode ADC_enableProbe(int slotID, bool enable);
NP_EXPORT NP_ErrorCode ADC_getStreamConversionFactor(int slotID, double* lsbToVoltage, int* bitDepth);
NP_EXPORT NP_ErrorCode ADC_setComparatorThreshold(int slotID, int channel, double vlow, double vhigh);
NP_EXPORT NP_ErrorCode ADC_getComparatorThreshold(int slotID, int channel, double* vlow, double* vhigh);
NP_EXPORT NP_ErrorCode ADC_getVoltageRange(int slotID, ADCrange_t* range);
NP_EXPORT NP_ErrorCode DAC_setVoltage(int slotID, int channel, double voltage);
NP_EXPORT NP_ErrorCode DAC_setDigitalLevels(int slotID, int channel, double vhigh, double vlow);
NP_EXPORT NP_ErrorCode ADC_getPacketFifoStatus(int slotID, int* packetsAvailable, int* headroom);

// ---- Self tests -----------------------------------------------------------------------------------------

// Answer 0 when the test passes and 1 when it fails. Tests of a port use its headstage link and must not run
// while the host streams from the port.

// Whether a basestation is open.
NP_EXPORT NP_ErrorCode bistBS(int slotID);
// Whether the port's link is locked.
NP_EXPORT NP_ErrorCode bistHB(int slotID, int portID, int dockID);
// Pseudo-random bits over the port's link; stopping writes the number of wrong ones, 0 when it fails.
NP_EXPORT NP_ErrorCode bistStartPRBS(int slotID, int portID);
NP_EXPORT NP_ErrorCode bistStopPRBS(int slotID, int portID, int* prbs_err);
// Writes two patterns into a register of the probe and reads them back.
NP_EXPORT NP_ErrorCode bistI2CMM(int slotID, int portID, int dockID);
// Reads both EEPROMs twice and compares.
NP_EXPORT NP_ErrorCode bistEEPROM(int slotID, int portID);
// Uploads the configuration and has the probe check its shift registers.
NP_EXPORT NP_ErrorCode bistSR(int slotID, int portID, int dockID);
// Streams the probe's test pattern and compares it, channel by channel. Fails at once while acquisition runs,
// from start_acquisition until stop_acquisition has returned, also when its pump has ended by itself. Leaves
// the probe in its test mode: init brings it back.
NP_EXPORT NP_ErrorCode bistPSB(int slotID, int portID, int dockID);

// Not run by this box. Logged; return 0.
NP_EXPORT NP_ErrorCode bistNoise(int slotID, int portID, int dockID);
NP_EXPORT NP_ErrorCode bistSignal(int slotID, int portID, int dockID);

// The headstage tester is not known to this box. Logged; its version is answered with 1, the tests with 0,
// and nothing is written.
NP_EXPORT NP_ErrorCode HST_GetVersion(int slotID, int portID, int* version_major, int* version_minor);
NP_EXPORT NP_ErrorCode HSTestVDDA1V2(int slotID, int portID);
NP_EXPORT NP_ErrorCode HSTestVDDD1V2(int slotID, int portID);
NP_EXPORT NP_ErrorCode HSTestVDDA1V8(int slotID, int portID);
NP_EXPORT NP_ErrorCode HSTestVDDD1V8(int slotID, int portID);
NP_EXPORT NP_ErrorCode HSTestOscillator(int slotID, int portID);
NP_EXPORT NP_ErrorCode HSTestMCLK(int slotID, int portID);
NP_EXPORT NP_ErrorCode HSTestPCLK(int slotID, int portID);
NP_EXPORT NP_ErrorCode HSTestPSB(int slotID, int portID);
NP_EXPORT NP_ErrorCode HSTestI2C(int slotID, int portID);
NP_EXPORT NP_ErrorCode HSTestNRST(int slotID, int portID);
NP_EXPORT NP_ErrorCode HSTestREC_NRESET(int slotID, int portID);

// Not supported.
NP_EXPORT NP_ErrorCode bistReadPRBS(int slotID, int portID, int* prbs_err);

// ---- File streams ---------------------------------------------------------------------------------------

// Not supported; streamTell answers 0.
NP_EXPORT NP_ErrorCode streamOpenFile(const char* filename, int portID, int dockID, streamsource_t source,
                                      np_streamhandle_t* handle);
NP_EXPORT NP_ErrorCode streamClose(np_streamhandle_t handle);
NP_EXPORT NP_ErrorCode streamSeek(np_streamhandle_t handle, uint64_t position, uint32_t* timestamp);
NP_EXPORT NP_ErrorCode streamSetPos(np_streamhandle_t handle, uint64_t position);
NP_EXPORT uint64_t streamTell(np_streamhandle_t handle);
NP_EXPORT NP_ErrorCode streamRead(np_streamhandle_t handle, uint32_t* timestamps, int16_t* data, int count,
                                  int* actualRead);
NP_EXPORT NP_ErrorCode streamReadPacket(np_streamhandle_t handle, pckhdr_t* header, int16_t* data, int count,
                                        int* actualRead);

// ---- Configuration --------------------------------------------------------------------------------------

// Not supported.
NP_EXPORT NP_ErrorCode getBasestationDriverID(int slotID, char* text, size_t len);
NP_EXPORT NP_ErrorCode getHeadstageDriverID(int slotID, int portID, char* text, size_t len);
NP_EXPORT NP_ErrorCode getFlexDriverID(int slotID, int portID, int dockID, char* text, size_t len);
NP_EXPORT NP_ErrorCode getProbeDriverID(int slotID, int portID, int dockID, char* text, size_t len);
NP_EXPORT NP_ErrorCode getBSCHardwareID(int slotID, HardwareID* id);
NP_EXPORT NP_ErrorCode setBSCHardwareID(int slotID, const HardwareID* id);
NP_EXPORT NP_ErrorCode getHeadstageHardwareID(int slotID, int portID, HardwareID* id);
NP_EXPORT NP_ErrorCode setHeadstageHardwareID(int slotID, int portID, const HardwareID* id);
NP_EXPORT NP_ErrorCode getFlexHardwareID(int slotID, int portID, int dockID, HardwareID* id);
NP_EXPORT NP_ErrorCode setFlexHardwareID(int slotID, int portID, int dockID, const HardwareID* id);
NP_EXPORT NP_ErrorCode getProbeHardwareID(int slotID, int portID, int dockID, HardwareID* id);
NP_EXPORT NP_ErrorCode setProbeHardwareID(int slotID, int portID, int dockID, const HardwareID* id);

// ---- Debug ----------------------------------------------------------------------------------------------

// Logged only: the log's verbosity stays as it is, and the callback is not called.
NP_EXPORT void dbg_setlevel(int level);
NP_EXPORT void dbg_setlogcallback(int minlevel, void (*callback)(int level, time_t ts, const char* module,
                                                                 const char* msg));
// Answers 0.
NP_EXPORT int dbg_getlevel();
// Writes an empty text.
NP_EXPORT void dbg_getversion_datetime(char* text, size_t len);

// Not supported.
NP_EXPORT NP_ErrorCode createSystemEventCallback(npcallbackhandle_t* handle,
                                                 np_systemeventcallbackfn_t callback, const void* userdata);
NP_EXPORT NP_ErrorCode writeBSCMM(int slotID, uint32_t address, uint32_t data);
NP_EXPORT NP_ErrorCode readBSCMM(int slotID, uint32_t address, uint32_t* data);
NP_EXPORT NP_ErrorCode writeI2C(int slotID, int portID, uint8_t device, uint8_t address, uint8_t data);
NP_EXPORT NP_ErrorCode readI2C(int slotID, int portID, uint8_t device, uint8_t address, uint8_t* data);
NP_EXPORT NP_ErrorCode writeI2Cex(int slotID, int portID, uint8_t device, uint8_t address, const void* data,
                                  size_t len);
NP_EXPORT NP_ErrorCode readI2Cex(int slotID, int portID, uint8_t device, uint8_t address, void* data,
                                 size_t len);
NP_EXPORT NP_ErrorCode writeI2Cflex(int slotID, int portID, int dockID, uint8_t device, uint8_t address,
                                    uint8_t data);
NP_EXPORT NP_ErrorCode readI2Cflex(int slotID, int portID, int dockID, uint8_t device, uint8_t address,
                                   uint8_t* data);
NP_EXPORT NP_ErrorCode dbg_setSlotEmulatorMode(int slotID, slotemulatormode_t mode);
NP_EXPORT NP_ErrorCode dbg_getSlotEmulatorMode(int slotID, slotemulatormode_t* mode);
NP_EXPORT NP_ErrorCode dbg_setSlotEmulatorType(int slotID, slotemulatortype_t type);
NP_EXPORT NP_ErrorCode dbg_getSlotEmulatorType(int slotID, slotemulatortype_t* type);
NP_EXPORT NP_ErrorCode dbg_setSlotEmulatorSyncPattern(int slotID, uint32_t* pattern);
NP_EXPORT NP_ErrorCode dbg_getSlotEmulatorSyncPattern(int slotID, uint32_t* pattern);
NP_EXPORT NP_ErrorCode dbg_setPortEmulatorMode(int slotID, int portID, portemulatormode_t mode);
NP_EXPORT NP_ErrorCode dbg_getPortEmulatorMode(int slotID, int portID, portemulatormode_t* mode);
NP_EXPORT NP_ErrorCode dbg_stats_reset(int slotID);
NP_EXPORT NP_ErrorCode dbg_diagstats_read(int slotID, np_diagstats* stats);
NP_EXPORT NP_ErrorCode dbg_sourcestats_read(int slotID, uint8_t sourceID, np_sourcestats* stats);
NP_EXPORT NP_ErrorCode dbg_read_srchain(int slotID, int portID, int dockID, uint8_t chain, uint8_t* data,
                                        size_t len, size_t* actualRead);

// ---- Optical probes -------------------------------------------------------------------------------------

// Logged; return 0, the site is neither set nor written.
NP_EXPORT NP_ErrorCode setEmissionSite(int slotID, int portID, int dockID, wavelength_t wavelength, int site);
NP_EXPORT NP_ErrorCode getEmissionSite(int slotID, int portID, int dockID, wavelength_t wavelength,
                                       int* site);

// Not supported.
NP_EXPORT NP_ErrorCode setOpticalCalibration(int slotID, int portID, int dockID, const char* filename);
NP_EXPORT NP_ErrorCode setOpticalSwitchCalibration(int slotID, int portID, int dockID,
                                                   wavelength_t wavelength, int site, double onCurrent,
                                                   double offCurrent);
NP_EXPORT NP_ErrorCode getOpticalSwitchCalibration(int slotID, int portID, int dockID,
                                                   wavelength_t wavelength, int site, double* onCurrent,
                                                   double* offCurrent);
NP_EXPORT NP_ErrorCode getEmissionSiteAttenuation(int slotID, int portID, int dockID, wavelength_t wavelength,
                                                  int site, double* attenuation);
NP_EXPORT NP_ErrorCode disableEmissionPath(int slotID, int portID, int dockID, wavelength_t wavelength);

// ---- Motion sensor --------------------------------------------------------------------------------------

// Not supported.
NP_EXPORT NP_ErrorCode IMU_detect(int slotID, int portID, bool* detected);
NP_EXPORT NP_ErrorCode IMU_enable(int slotID, int portID, bool enable);
NP_EXPORT NP_ErrorCode IMU_setAccelerometerSampleRateDivider(int slotID, int portID, uint16_t divider);
NP_EXPORT NP_ErrorCode IMU_setAccelerometerScale(int slotID, int portID, accelerometer_scale_t scale);
NP_EXPORT NP_ErrorCode IMU_setGyroscopeSampleRateDivider(int slotID, int portID, uint8_t divider);
NP_EXPORT NP_ErrorCode IMU_setGyroscopeScale(int slotID, int portID, gyroscope_scale_t scale);
NP_EXPORT NP_ErrorCode IMU_readPackets(int slotID, int portID, int count, IMUPacket* packets,
                                       int* actualRead);
NP_EXPORT NP_ErrorCode IMU_getFIFOStatus(int slotID, int portID, int* packetsAvailable, int* headroom);
NP_EXPORT NP_ErrorCode IMU_getPllTimeBaseCorrection(int slotID, int portID, int* correction);
NP_EXPORT NP_ErrorCode IMU_DfuRead(int slotID, int portID, uint8_t* data, size_t len, size_t* actualRead);
NP_EXPORT NP_ErrorCode IMU_DfuWrite(int slotID, int portID, const uint8_t* data, size_t len,
                                    size_t* actualWritten);

} // namespace Neuropixels
