// The layout of every record of the published API, spelled out, as hosts have been compiled against it: sizes
// and offsets in bytes. Some records are packed. And what its handles and callbacks are.
#include "NeuropixAPI.h"

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace {

using namespace Neuropixels;

#define RECORD(type, size) static_assert(std::is_standard_layout_v<type> && sizeof(type) == (size), #type);
#define FIELD(record, type, name, offset)                                                                    \
    static_assert(std::is_same_v<decltype(record::name), type>, #record "::" #name);                         \
    static_assert(offsetof(record, name) == (offset), #record "::" #name);

RECORD(basestationID, 8)
FIELD(basestationID, NPPlatformID_t, platformid, 0)
FIELD(basestationID, int, ID, 4)

RECORD(firmware_Info, 76)
FIELD(firmware_Info, int, major, 0)
FIELD(firmware_Info, int, minor, 4)
FIELD(firmware_Info, int, build, 8)
FIELD(firmware_Info, char[64], name, 12)

RECORD(PacketInfo, 8)
FIELD(PacketInfo, uint32_t, Timestamp, 0)
FIELD(PacketInfo, uint16_t, Status, 4)
FIELD(PacketInfo, uint16_t, payloadlength, 6)

RECORD(electrodePacket, 10056)
FIELD(electrodePacket, uint32_t[12], timestamp, 0)
FIELD(electrodePacket, int16_t[12][384], apData, 48)
FIELD(electrodePacket, int16_t[384], lfpData, 9264)
FIELD(electrodePacket, uint16_t[12], Status, 10032)

RECORD(pckhdr_t, 16)
FIELD(pckhdr_t, uint32_t, MAGIC, 0)
FIELD(pckhdr_t, uint16_t, samplecount, 4)
FIELD(pckhdr_t, uint8_t, sessionID_seqnr, 6)
FIELD(pckhdr_t, uint8_t, format, 7)
FIELD(pckhdr_t, uint32_t, timestamp, 8)
FIELD(pckhdr_t, uint8_t, status, 12)
FIELD(pckhdr_t, uint8_t, sourceid, 13)
FIELD(pckhdr_t, uint16_t, crc, 14)

RECORD(np_packet_t, 1040)
FIELD(np_packet_t, pckhdr_t, hdr, 0)
FIELD(np_packet_t, uint8_t[1024], payload, 16)

RECORD(HardwareID, 50)
FIELD(HardwareID, uint8_t, version_Major, 0)
FIELD(HardwareID, uint8_t, version_Minor, 1)
FIELD(HardwareID, uint64_t, SerialNumber, 2)
FIELD(HardwareID, char[40], ProductNumber, 10)

RECORD(np_diagstats, 48)
FIELD(np_diagstats, uint64_t, totalbytes, 0)
FIELD(np_diagstats, uint32_t, packetcount, 8)
FIELD(np_diagstats, uint32_t, triggers, 12)
FIELD(np_diagstats, uint32_t, err_badmagic, 16)
FIELD(np_diagstats, uint32_t, err_badcrc, 20)
FIELD(np_diagstats, uint32_t, err_count, 24)
FIELD(np_diagstats, uint32_t, err_serdes, 28)
FIELD(np_diagstats, uint32_t, err_lock, 32)
FIELD(np_diagstats, uint32_t, err_pop, 36)
FIELD(np_diagstats, uint32_t, err_sync, 40)

RECORD(np_sourcestats, 16)
FIELD(np_sourcestats, uint32_t, timestamp, 0)
FIELD(np_sourcestats, uint32_t, packetcount, 4)
FIELD(np_sourcestats, uint32_t, samplecount, 8)
FIELD(np_sourcestats, uint32_t, fifooverflow, 12)

RECORD(IMUPacket, 27)
FIELD(IMUPacket, uint32_t, timestamp, 0)
FIELD(IMUPacket, uint8_t, status, 4)
FIELD(IMUPacket, uint8_t, packet_counter, 5)
FIELD(IMUPacket, uint8_t, delay, 6)
FIELD(IMUPacket, int16_t, accel_x, 7)
FIELD(IMUPacket, int16_t, accel_y, 9)
FIELD(IMUPacket, int16_t, accel_z, 11)
FIELD(IMUPacket, int16_t, gyro_x, 13)
FIELD(IMUPacket, int16_t, gyro_y, 15)
FIELD(IMUPacket, int16_t, gyro_z, 17)
FIELD(IMUPacket, int16_t, temperature, 19)
FIELD(IMUPacket, int16_t, magn_x, 21)
FIELD(IMUPacket, int16_t, magn_y, 23)
FIELD(IMUPacket, int16_t, magn_z, 25)

static_assert(std::is_same_v<np_streamhandle_t, void*>);
static_assert(std::is_same_v<npcallbackhandle_t, void*>);
#if defined(NEUROPIXAPI_PLAIN_H)
// C has no references; a host passes and gets the same.
static_assert(std::is_same_v<np_packetcallbackfn_t, void (*)(const np_packet_t*, const void*)>);
#else
static_assert(std::is_same_v<np_packetcallbackfn_t, void (*)(const np_packet_t&, const void*)>);
#endif
static_assert(
    std::is_same_v<np_systemeventcallbackfn_t, void (*)(npsystemevent_t, const void*, const void*)>);

} // namespace
