// Layer: façade, host mode. The way in which published acquisition programs expect a basestation to behave:
// devices by platform and slot, streaming from a trigger until the device is armed, reads that never wait,
// signed samples with running stamps. Called on the host's threads. The reads take no lock that another call
// takes, because hosts end reading threads by force.
#pragma once

#include "common/Relaxed.h"
#include "host_mode/Device_Table.h"
#include "host_mode/Host_Mode_Options.h"
#include "host_streams/ADC_Inputs.h"
#include "host_streams/ADC_Stream.h"
#include "host_streams/Electrode_Stream.h"
#include "host_streams/Sync_Levels.h"
#include "host_streams/Sync_Source.h"
#include "modes/A_Mode.h"
#include "probe/CP_L2_CH_Results_Null_Writer.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>

namespace Pelgar::ORBE::npoe_adapter {

class Host_Mode final : public A_Mode {
public:
    Host_Mode();

    // Appears from now on as these devices, all of them closed. Not while a basestation is open.
    void configure(const Host_Mode_Options& options);

    Host_Mode_Options options() const;

    int list_devices(basestationID* list, int count) override;
    NP_ErrorCode device_info(int slotID, basestationID* info) override;
    bool find_slot(const basestationID* id, int* slotID) override;

    std::optional<NP_ErrorCode> answer_opening(int slotID) override;
    void connect_streams(ORBE_Controller_Library& controller) override;
    void opened() override;
    bool leave(int slotID) override;
    void turn_readers_away() override;

    NP_ErrorCode start(int slotID, int portID) override;
    NP_ErrorCode stop(int slotID, int portID) override;
    NP_ErrorCode arm(int slotID) override;

    NP_ErrorCode read_electrode_data(int slotID, int portID, electrodePacket* packets, int* actualAmount,
                                     int requestedAmount) override;
    NP_ErrorCode electrode_fifo_state(int slotID, int portID, int* packetsAvailable, int* headroom) override;
    NP_ErrorCode read_adc_packets(int slotID, PacketInfo* packetInfo, int16_t* data, int channelCount,
                                  int packetCount, int* packetsRead) override;

    NP_ErrorCode check_port(int slotID, int portID) override;
    NP_ErrorCode check_link(ORBE_Controller_Library& controller, int slotID, int portID) override;

    bool headstage_waits_for_port() override { return false; }

    bool detect_headstage(ORBE_Controller_Library& controller, int slotID, int portID) override;
    bool read_probe_serial_number(ORBE_Controller_Library& controller, unsigned port,
                                  unsigned long long* number) override;
    bool read_gain(ORBE_Controller_Library& controller, unsigned port, int channel, int* ap_gain,
                   int* lfp_gain) override;

    // Sees to it that getLastErrorMessage says something of every failure.
    NP_ErrorCode answer(const char* name, NP_ErrorCode result, bool is_explained) override;

    // What hosts ask several hundred times a second is not logged.
    int log_verbosity(const char* name) override;

    bool twins_call_functions() override { return true; }

#define NP_FUNCTION(result, name, parameters, arguments)
#define NP_ADDITION(result, name, parameters, arguments)
#define NP_FUNCTION_BY_MODE(result, name, parameters, arguments) result name parameters override;
#define NP_UNSUPPORTED_BY_MODE(result, name, parameters, arguments) result name parameters override;
#include "NeuropixAPI_Functions.inc"
    NP_ErrorCode readHSSN(int slotID, int portID, uint64_t* sn) override;

private:
    // A device is found by its slot, has been opened, has been triggered.
    struct Device_State {
        std::atomic<bool> is_open{false};
        std::atomic<bool> is_running{false};
    };

    static constexpr std::size_t probe_port_count = 4;

    const Device_Table& devices() const {
        return *m_devices.load(std::memory_order_acquire);
    }

    // A device may get another slot at any time: what is to be done with the one in a slot is done with what
    // one look has found.

    // SUCCESS, and the device in the slot; NO_SLOT when there is none.
    NP_ErrorCode find_device(int slotID, const Host_Device*& device) const;
    NP_ErrorCode check_slot(int slotID) const;
    // And when it has such a port; WRONG_PORT otherwise.
    NP_ErrorCode check_stream_port(int slotID, int portID) const;
    // And when it has the ADC inputs; NOTSUPPORTED otherwise.
    NP_ErrorCode check_has_adc(int slotID) const;
    // SUCCESS, and the index of the device in the slot, when it is open; NO_SLOT or NOT_OPEN otherwise.
    NP_ErrorCode find_open(int slotID, std::size_t& device) const;
    NP_ErrorCode check_open(int slotID) const;
    // And when it has the ADC inputs; NOTSUPPORTED otherwise.
    NP_ErrorCode check_adc(int slotID) const;
    // The port of the box that an API port leads to; nothing for one that leads nowhere.
    std::optional<unsigned> box_port(int slotID, int portID) const;
    bool has_headstage(ORBE_Controller_Library& controller, unsigned port) const;

    Electrode_Stream* electrode_stream(int slotID, int portID) const;
    std::uint32_t used_ports() const;

    // All of the following hold the stream.
    void stop_device(std::size_t device);
    NP_ErrorCode start_box();
    void stop_box();
    void begin_run(std::size_t device);
    void end_run(std::size_t device);
    bool any_is_open() const;
    void close_devices();
    bool any_is_running() const;

    mutable std::mutex m_options_mutex;
    Host_Mode_Options m_options;
    Device_Table m_usb{Host_Mode_Options::Devices::usb};
    Device_Table m_pxi{Host_Mode_Options::Devices::pxi};
    Device_Table m_both{Host_Mode_Options::Devices::both};
    std::atomic<Device_Table*> m_devices{&m_usb};
    std::array<Device_State, Device_Table::most_devices> m_states;
    // The one that openBS brings the box up for.
    std::size_t m_opening = 0;

    Sync_Source m_sync_source;
    Sync_Levels m_sync_levels;
    ADC_Inputs m_adc_inputs;
    // Made by the first opening that needs them, and kept.
    std::shared_ptr<ADC_Stream> m_adc_stream;
    std::array<std::shared_ptr<Electrode_Stream>, probe_port_count> m_electrode_streams;
    std::array<std::atomic<Electrode_Stream*>, probe_port_count> m_readable_streams{};
    std::atomic<ADC_Stream*> m_readable_adc_stream{nullptr};

    // Of ports that no device has.
    const std::shared_ptr<demux::CP_L2_CH_Results_Null_Writer> m_unheard =
        std::make_shared<demux::CP_L2_CH_Results_Null_Writer>();

    std::uint32_t m_streaming = 0;            // times that the box has streamed
    Relaxed<std::uint32_t> m_simulated_ports; // of the recording that is open
    // Of the probes' link, under its lock.
    std::array<bool, probe_port_count> m_link_is_up{};
};

Host_Mode& host_mode();

} // namespace Pelgar::ORBE::npoe_adapter
