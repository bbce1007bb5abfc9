// The type of every function of the published API, spelled out, as hosts have been compiled against it: the
// header and the list that the library is made from must not drift away from it together. Nothing here is
// taken from either.
#include "NeuropixAPI_C.h"

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <type_traits>

namespace {

using namespace Neuropixels;

// The number of these lines is counted as well, so that none gets lost.
constexpr int lines_before = __COUNTER__;

// A function of the published API, and its C twin.
#define PUBLISHED(name, ...)                                                                                 \
    static_assert(std::is_same_v<decltype(Neuropixels::name), __VA_ARGS__>, #name);                          \
    static_assert(std::is_same_v<decltype(::np_##name), __VA_ARGS__> && __COUNTER__ > lines_before,          \
                  "np_" #name);

// System.
PUBLISHED(getAPIVersion, void(int*, int*))
PUBLISHED(getAPIVersionFull, size_t(char*, size_t))
PUBLISHED(getLastErrorMessage, size_t(char*, size_t))
PUBLISHED(getErrorMessage, const char*(NP_ErrorCode))
PUBLISHED(getDeviceList, int(basestationID*, int))
PUBLISHED(getDeviceInfo, NP_ErrorCode(int, basestationID*))
PUBLISHED(tryGetSlotID, bool(const basestationID*, int*))
PUBLISHED(scanBS, NP_ErrorCode())
PUBLISHED(mapBS, NP_ErrorCode(int, int))
PUBLISHED(unmapBS, NP_ErrorCode(int))
PUBLISHED(destroyHandle, NP_ErrorCode(npcallbackhandle_t*))
PUBLISHED(setParameter, NP_ErrorCode(np_parameter_t, int))
PUBLISHED(getParameter, NP_ErrorCode(np_parameter_t, int*))
PUBLISHED(setParameter_double, NP_ErrorCode(np_parameter_t, double))
PUBLISHED(getParameter_double, NP_ErrorCode(np_parameter_t, double*))

// Basestation.
PUBLISHED(detectBS, NP_ErrorCode(int, bool*))
PUBLISHED(openBS, NP_ErrorCode(int))
PUBLISHED(closeBS, NP_ErrorCode(int))
PUBLISHED(arm, NP_ErrorCode(int))
PUBLISHED(setSWTrigger, NP_ErrorCode(int))
PUBLISHED(setSWTriggerEx, NP_ErrorCode(int, swtriggerflags_t))
PUBLISHED(setTriggerEdge, NP_ErrorCode(int, bool))
PUBLISHED(setSyncClockFrequency, NP_ErrorCode(int, double))
PUBLISHED(setSyncClockPeriod, NP_ErrorCode(int, int))
PUBLISHED(checkFtdiDriver, NP_ErrorCode(driver_version*, driver_version*, bool*, bool*))
PUBLISHED(checkBasestationSupported, NP_ErrorCode(int))
PUBLISHED(ob_getFirmwareInfo, NP_ErrorCode(int, firmware_Info*))
PUBLISHED(bs_resetFirmware, NP_ErrorCode(int))
PUBLISHED(bsc_resetFirmware, NP_ErrorCode(int))
PUBLISHED(switchmatrix_set, NP_ErrorCode(int, switchmatrixoutput_t, switchmatrixinput_t, bool))
PUBLISHED(switchmatrix_get, NP_ErrorCode(int, switchmatrixoutput_t, switchmatrixinput_t, bool*))
PUBLISHED(switchmatrix_clear, NP_ErrorCode(int, switchmatrixoutput_t))
PUBLISHED(switchmatrix_setInputInversion, NP_ErrorCode(int, switchmatrixinput_t, bool))
PUBLISHED(switchmatrix_getInputInversion, NP_ErrorCode(int, switchmatrixinput_t, bool*))
PUBLISHED(switchmatrix_setOutputInversion, NP_ErrorCode(int, switchmatrixoutput_t, bool))
PUBLISHED(switchmatrix_getOutputInversion, NP_ErrorCode(int, switchmatrixoutput_t, bool*))
PUBLISHED(switchmatrix_setOutputTriggerEdge, NP_ErrorCode(int, switchmatrixoutput_t, triggeredge_t))
PUBLISHED(switchmatrix_getOutputTriggerEdge, NP_ErrorCode(int, switchmatrixoutput_t, triggeredge_t*))
PUBLISHED(setDataMode, NP_ErrorCode(int, int, np_datamode_t))
PUBLISHED(getDataMode, NP_ErrorCode(int, int, np_datamode_t*))
PUBLISHED(bs_getTemperature, NP_ErrorCode(int, double*))
PUBLISHED(bs_getFirmwareInfo, NP_ErrorCode(int, firmware_Info*))
PUBLISHED(bs_updateFirmware, NP_ErrorCode(int, const char*, int (*)(size_t)))
PUBLISHED(bsc_getTemperature, NP_ErrorCode(int, double*))
PUBLISHED(bsc_getFirmwareInfo, NP_ErrorCode(int, firmware_Info*))
PUBLISHED(bsc_updateFirmware, NP_ErrorCode(int, const char*, int (*)(size_t)))
PUBLISHED(setFileStream, NP_ErrorCode(int, const char*))
PUBLISHED(enableFileStream, NP_ErrorCode(int, bool))
PUBLISHED(getBSCSupportedPortCount, NP_ErrorCode(int, int*))
PUBLISHED(getHSSupportedProbeCount, NP_ErrorCode(int, int, int*))

// Port and headstage.
PUBLISHED(openPort, NP_ErrorCode(int, int))
PUBLISHED(closePort, NP_ErrorCode(int, int))
PUBLISHED(detectHeadStage, NP_ErrorCode(int, int, bool*))
PUBLISHED(detectFlex, NP_ErrorCode(int, int, int, bool*))
PUBLISHED(setHSLed, NP_ErrorCode(int, int, bool))
PUBLISHED(getFlexVersion, NP_ErrorCode(int, int, int, int*, int*))
PUBLISHED(readFlexPN, NP_ErrorCode(int, int, int, char*, size_t))
PUBLISHED(getHSVersion, NP_ErrorCode(int, int, int*, int*))
PUBLISHED(readHSPN, NP_ErrorCode(int, int, char*, size_t))
PUBLISHED(readHSSN, NP_ErrorCode(int, int, uint64_t*))
PUBLISHED(readProbeSN, NP_ErrorCode(int, int, int, uint64_t*))
PUBLISHED(readProbePN, NP_ErrorCode(int, int, int, char*, size_t))
PUBLISHED(readBSCPN, NP_ErrorCode(int, char*, size_t))
PUBLISHED(readBSCSN, NP_ErrorCode(int, uint64_t*))
PUBLISHED(getBSCVersion, NP_ErrorCode(int, int*, int*))
PUBLISHED(setPortSyncPattern, NP_ErrorCode(int, int, uint32_t*))
PUBLISHED(getPortSyncPattern, NP_ErrorCode(int, int, uint32_t*))
PUBLISHED(setVirtualHeadstage, NP_ErrorCode(int, int))

// Probe.
PUBLISHED(openProbe, NP_ErrorCode(int, int, int))
PUBLISHED(closeProbe, NP_ErrorCode(int, int, int))
PUBLISHED(init, NP_ErrorCode(int, int, int))
PUBLISHED(writeProbeConfiguration, NP_ErrorCode(int, int, int, bool))
PUBLISHED(setADCCalibration, NP_ErrorCode(int, int, const char*))
PUBLISHED(setGainCalibration, NP_ErrorCode(int, int, int, const char*))
PUBLISHED(setProbeSyncPattern, NP_ErrorCode(int, int, int, uint32_t*))
PUBLISHED(getProbeSyncPattern, NP_ErrorCode(int, int, int, uint32_t*))
PUBLISHED(readElectrodeData, NP_ErrorCode(int, int, int, electrodePacket*, int*, int))
PUBLISHED(getElectrodeDataFifoState, NP_ErrorCode(int, int, int, int*, int*))
PUBLISHED(setTestSignal, NP_ErrorCode(int, int, int, bool))
PUBLISHED(setOPMODE, NP_ErrorCode(int, int, int, probe_opmode_t))
PUBLISHED(setCALMODE, NP_ErrorCode(int, int, int, testinputmode_t))
PUBLISHED(setREC_NRESET, NP_ErrorCode(int, int, bool))
PUBLISHED(readPacket, NP_ErrorCode(int, int, int, streamsource_t, PacketInfo*, int16_t*, int, int*))
PUBLISHED(readPackets, NP_ErrorCode(int, int, int, streamsource_t, PacketInfo*, int16_t*, int, int, int*))
PUBLISHED(getPacketFifoStatus, NP_ErrorCode(int, int, int, streamsource_t, int*, int*))
PUBLISHED(createSlotPacketCallback,
          NP_ErrorCode(int, npcallbackhandle_t*, np_packetcallbackfn_t, const void*))
PUBLISHED(createProbePacketCallback, NP_ErrorCode(int, int, int, streamsource_t, npcallbackhandle_t*,
                                                  np_packetcallbackfn_t, const void*))
PUBLISHED(unpackData, NP_ErrorCode(const np_packet_t*, int16_t*, int, int*))
PUBLISHED(setGain, NP_ErrorCode(int, int, int, int, int, int))
PUBLISHED(getGain, NP_ErrorCode(int, int, int, int, int*, int*))
PUBLISHED(selectElectrode, NP_ErrorCode(int, int, int, int, int, int))
PUBLISHED(selectElectrodeMask, NP_ErrorCode(int, int, int, int, int, electrodebanks_t))
PUBLISHED(setReference, NP_ErrorCode(int, int, int, int, int, channelreference_t, int))
PUBLISHED(setAPCornerFrequency, NP_ErrorCode(int, int, int, int, bool))
PUBLISHED(setStdb, NP_ErrorCode(int, int, int, int, bool))
PUBLISHED(selectColumnPattern, NP_ErrorCode(int, int, int, columnpattern_t))
PUBLISHED(selectElectrodeGroup, NP_ErrorCode(int, int, int, int, int))
PUBLISHED(selectElectrodeGroupMask, NP_ErrorCode(int, int, int, int, electrodebanks_t))

// Auxiliary I/O.
PUBLISHED(waveplayer_writeBuffer, NP_ErrorCode(int, const int16_t*, int))
PUBLISHED(waveplayer_arm, NP_ErrorCode(int, bool))
PUBLISHED(waveplayer_setSampleFrequency, NP_ErrorCode(int, double))
PUBLISHED(waveplayer_getSampleFrequency, NP_ErrorCode(int, double*))
PUBLISHED(ADC_read, NP_ErrorCode(int, int, double*))
PUBLISHED(ADC_readComparator, NP_ErrorCode(int, int, bool*))
PUBLISHED(ADC_readComparators, NP_ErrorCode(int, uint32_t*))
PUBLISHED(ADC_enableProbe, NP_ErrorCode(int, bool))
PUBLISHED(ADC_getStreamConversionFactor, NP_ErrorCode(int, double*, int*))
PUBLISHED(ADC_setComparatorThreshold, NP_ErrorCode(int, int, double, double))
PUBLISHED(ADC_getComparatorThreshold, NP_ErrorCode(int, int, double*, double*))
PUBLISHED(ADC_setVoltageRange, NP_ErrorCode(int, ADCrange_t))
PUBLISHED(ADC_getVoltageRange, NP_ErrorCode(int, ADCrange_t*))
PUBLISHED(DAC_setVoltage, NP_ErrorCode(int, int, double))
PUBLISHED(DAC_setDigitalLevels, NP_ErrorCode(int, int, double, double))
PUBLISHED(DAC_enableOutput, NP_ErrorCode(int, int, bool))
PUBLISHED(DAC_setProbeSniffer, NP_ErrorCode(int, int, int, int, int, streamsource_t))
PUBLISHED(ADC_readPackets, NP_ErrorCode(int, PacketInfo*, int16_t*, int, int, int*))
PUBLISHED(ADC_getPacketFifoStatus, NP_ErrorCode(int, int*, int*))

// Self tests.
PUBLISHED(bistBS, NP_ErrorCode(int))
PUBLISHED(bistHB, NP_ErrorCode(int, int, int))
PUBLISHED(bistStartPRBS, NP_ErrorCode(int, int))
PUBLISHED(bistStopPRBS, NP_ErrorCode(int, int, int*))
PUBLISHED(bistReadPRBS, NP_ErrorCode(int, int, int*))
PUBLISHED(bistI2CMM, NP_ErrorCode(int, int, int))
PUBLISHED(bistEEPROM, NP_ErrorCode(int, int))
PUBLISHED(bistSR, NP_ErrorCode(int, int, int))
PUBLISHED(bistPSB, NP_ErrorCode(int, int, int))
PUBLISHED(bistNoise, NP_ErrorCode(int, int, int))
PUBLISHED(bistSignal, NP_ErrorCode(int, int, int))
PUBLISHED(HST_GetVersion, NP_ErrorCode(int, int, int*, int*))
PUBLISHED(HSTestVDDA1V2, NP_ErrorCode(int, int))
PUBLISHED(HSTestVDDD1V2, NP_ErrorCode(int, int))
PUBLISHED(HSTestVDDA1V8, NP_ErrorCode(int, int))
PUBLISHED(HSTestVDDD1V8, NP_ErrorCode(int, int))
PUBLISHED(HSTestOscillator, NP_ErrorCode(int, int))
PUBLISHED(HSTestMCLK, NP_ErrorCode(int, int))
PUBLISHED(HSTestPCLK, NP_ErrorCode(int, int))
PUBLISHED(HSTestPSB, NP_ErrorCode(int, int))
PUBLISHED(HSTestI2C, NP_ErrorCode(int, int))
PUBLISHED(HSTestNRST, NP_ErrorCode(int, int))
PUBLISHED(HSTestREC_NRESET, NP_ErrorCode(int, int))

// File streams.
PUBLISHED(streamOpenFile, NP_ErrorCode(const char*, int, int, streamsource_t, np_streamhandle_t*))
PUBLISHED(streamClose, NP_ErrorCode(np_streamhandle_t))
PUBLISHED(streamSeek, NP_ErrorCode(np_streamhandle_t, uint64_t, uint32_t*))
PUBLISHED(streamSetPos, NP_ErrorCode(np_streamhandle_t, uint64_t))
PUBLISHED(streamTell, uint64_t(np_streamhandle_t))
PUBLISHED(streamRead, NP_ErrorCode(np_streamhandle_t, uint32_t*, int16_t*, int, int*))
PUBLISHED(streamReadPacket, NP_ErrorCode(np_streamhandle_t, pckhdr_t*, int16_t*, int, int*))

// Configuration.
PUBLISHED(getBasestationDriverID, NP_ErrorCode(int, char*, size_t))
PUBLISHED(getHeadstageDriverID, NP_ErrorCode(int, int, char*, size_t))
PUBLISHED(getFlexDriverID, NP_ErrorCode(int, int, int, char*, size_t))
PUBLISHED(getProbeDriverID, NP_ErrorCode(int, int, int, char*, size_t))
PUBLISHED(getBSCHardwareID, NP_ErrorCode(int, HardwareID*))
PUBLISHED(setBSCHardwareID, NP_ErrorCode(int, const HardwareID*))
PUBLISHED(getHeadstageHardwareID, NP_ErrorCode(int, int, HardwareID*))
PUBLISHED(setHeadstageHardwareID, NP_ErrorCode(int, int, const HardwareID*))
PUBLISHED(getFlexHardwareID, NP_ErrorCode(int, int, int, HardwareID*))
PUBLISHED(setFlexHardwareID, NP_ErrorCode(int, int, int, const HardwareID*))
PUBLISHED(getProbeHardwareID, NP_ErrorCode(int, int, int, HardwareID*))
PUBLISHED(setProbeHardwareID, NP_ErrorCode(int, int, int, const HardwareID*))

// Debug.
PUBLISHED(createSystemEventCallback,
          NP_ErrorCode(npcallbackhandle_t*, np_systemeventcallbackfn_t, const void*))
PUBLISHED(writeBSCMM, NP_ErrorCode(int, uint32_t, uint32_t))
PUBLISHED(readBSCMM, NP_ErrorCode(int, uint32_t, uint32_t*))
PUBLISHED(writeI2C, NP_ErrorCode(int, int, uint8_t, uint8_t, uint8_t))
PUBLISHED(readI2C, NP_ErrorCode(int, int, uint8_t, uint8_t, uint8_t*))
PUBLISHED(writeI2Cex, NP_ErrorCode(int, int, uint8_t, uint8_t, const void*, size_t))
PUBLISHED(readI2Cex, NP_ErrorCode(int, int, uint8_t, uint8_t, void*, size_t))
PUBLISHED(writeI2Cflex, NP_ErrorCode(int, int, int, uint8_t, uint8_t, uint8_t))
PUBLISHED(readI2Cflex, NP_ErrorCode(int, int, int, uint8_t, uint8_t, uint8_t*))
PUBLISHED(dbg_setlevel, void(int))
PUBLISHED(dbg_getlevel, int())
PUBLISHED(dbg_setlogcallback, void(int, void (*)(int, time_t, const char*, const char*)))
PUBLISHED(dbg_getversion_datetime, void(char*, size_t))
PUBLISHED(dbg_setSlotEmulatorMode, NP_ErrorCode(int, slotemulatormode_t))
PUBLISHED(dbg_getSlotEmulatorMode, NP_ErrorCode(int, slotemulatormode_t*))
PUBLISHED(dbg_setSlotEmulatorType, NP_ErrorCode(int, slotemulatortype_t))
PUBLISHED(dbg_getSlotEmulatorType, NP_ErrorCode(int, slotemulatortype_t*))
PUBLISHED(dbg_setSlotEmulatorSyncPattern, NP_ErrorCode(int, uint32_t*))
PUBLISHED(dbg_getSlotEmulatorSyncPattern, NP_ErrorCode(int, uint32_t*))
PUBLISHED(dbg_setPortEmulatorMode, NP_ErrorCode(int, int, portemulatormode_t))
PUBLISHED(dbg_getPortEmulatorMode, NP_ErrorCode(int, int, portemulatormode_t*))
PUBLISHED(dbg_stats_reset, NP_ErrorCode(int))
PUBLISHED(dbg_diagstats_read, NP_ErrorCode(int, np_diagstats*))
PUBLISHED(dbg_sourcestats_read, NP_ErrorCode(int, uint8_t, np_sourcestats*))
PUBLISHED(dbg_read_srchain, NP_ErrorCode(int, int, int, uint8_t, uint8_t*, size_t, size_t*))

// Optical.
PUBLISHED(setOpticalCalibration, NP_ErrorCode(int, int, int, const char*))
PUBLISHED(setOpticalSwitchCalibration, NP_ErrorCode(int, int, int, wavelength_t, int, double, double))
PUBLISHED(getOpticalSwitchCalibration, NP_ErrorCode(int, int, int, wavelength_t, int, double*, double*))
PUBLISHED(setEmissionSite, NP_ErrorCode(int, int, int, wavelength_t, int))
PUBLISHED(getEmissionSite, NP_ErrorCode(int, int, int, wavelength_t, int*))
PUBLISHED(getEmissionSiteAttenuation, NP_ErrorCode(int, int, int, wavelength_t, int, double*))
PUBLISHED(disableEmissionPath, NP_ErrorCode(int, int, int, wavelength_t))

// Motion.
PUBLISHED(IMU_detect, NP_ErrorCode(int, int, bool*))
PUBLISHED(IMU_enable, NP_ErrorCode(int, int, bool))
PUBLISHED(IMU_setAccelerometerSampleRateDivider, NP_ErrorCode(int, int, uint16_t))
PUBLISHED(IMU_setAccelerometerScale, NP_ErrorCode(int, int, accelerometer_scale_t))
PUBLISHED(IMU_setGyroscopeSampleRateDivider, NP_ErrorCode(int, int, uint8_t))
PUBLISHED(IMU_setGyroscopeScale, NP_ErrorCode(int, int, gyroscope_scale_t))
PUBLISHED(IMU_readPackets, NP_ErrorCode(int, int, int, IMUPacket*, int*))
PUBLISHED(IMU_getFIFOStatus, NP_ErrorCode(int, int, int*, int*))
PUBLISHED(IMU_getPllTimeBaseCorrection, NP_ErrorCode(int, int, int*))
PUBLISHED(IMU_DfuRead, NP_ErrorCode(int, int, uint8_t*, size_t, size_t*))
PUBLISHED(IMU_DfuWrite, NP_ErrorCode(int, int, const uint8_t*, size_t, size_t*))

static_assert(__COUNTER__ - lines_before - 1 == 202);

} // namespace
