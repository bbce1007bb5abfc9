#include "Host_Road.h"

#include "Host_Road_Expectation.h"

namespace Pelgar::ORBE::host {

namespace {

using namespace Neuropixels;

constexpr int slot = 0;
constexpr int dock = 0;
constexpr int first_port = 1;
constexpr int adc_channels = 12;

// Packets asked for at once. The buffers are too large for a stack.
constexpr std::uint32_t electrode_batch = 16;
constexpr std::uint32_t adc_batch = 64;
electrodePacket g_electrode_packets[electrode_batch];
PacketInfo g_adc_infos[adc_batch];
std::int16_t g_adc_samples[adc_batch * adc_channels];

// The parts of an expectation.
struct Expectation {
    Expectation_Head head;
    const electrodePacket* electrode_packets;
    const Expected_ADC_Packet* adc_packets;
};

constexpr Host_Road_Result ended_at(Host_Road_Step step, int port = 0, std::uint32_t packet = 0,
                                    std::uint32_t byte = 0) {
    return {step, port, packet, byte};
}

constexpr bool is_good(const Host_Road_Result& result) {
    return result.step == ROAD_EQUAL;
}

std::uint32_t smaller(std::uint32_t left, std::uint32_t right) {
    return left < right ? left : right;
}

// The first byte that differs, or `size`.
std::uint32_t first_difference(const void* left, const void* right, std::uint32_t size) {
    const auto* const left_bytes = static_cast<const unsigned char*>(left);
    const auto* const right_bytes = static_cast<const unsigned char*>(right);
    std::uint32_t i = 0;
    while (i < size && left_bytes[i] == right_bytes[i]) {
        ++i;
    }
    return i;
}

bool read_expectation(const void* file, std::size_t size, Expectation& expectation) {
    if (size < sizeof(Expectation_Head)) {
        return false;
    }
    expectation.head = *static_cast<const Expectation_Head*>(file);
    std::size_t electrode_packets = 0;
    for (const std::uint32_t packets : expectation.head.electrode_packets) {
        if (packets > most_packets) {
            return false;
        }
        electrode_packets += packets;
    }
    const auto* const bytes = static_cast<const unsigned char*>(file);
    const std::size_t adc_begin = sizeof(Expectation_Head) + electrode_packets * sizeof(electrodePacket);
    expectation.electrode_packets =
        static_cast<const electrodePacket*>(static_cast<const void*>(bytes + sizeof(Expectation_Head)));
    expectation.adc_packets =
        static_cast<const Expected_ADC_Packet*>(static_cast<const void*>(bytes + adc_begin));
    return expectation.head.magic == expectation_magic && expectation.head.adc_packets <= most_packets &&
           size == adc_begin + expectation.head.adc_packets * sizeof(Expected_ADC_Packet);
}

Host_Road_Result open() {
    basestationID device = {NPPlatform_None, 0};
    int found_slot = -1;
    if (getDeviceList(&device, 1) != 1 || device.platformid != NPPlatform_USB || device.ID != 1 ||
        !tryGetSlotID(&device, &found_slot) || found_slot != slot) {
        return ended_at(ROAD_NO_DEVICE);
    }
    return ended_at(openBS(slot) == SUCCESS ? ROAD_EQUAL : ROAD_NOT_OPENED);
}

Host_Road_Result compare_port(int port, const electrodePacket* expected, std::uint32_t count) {
    std::uint32_t done = 0;
    while (done < count) {
        const std::uint32_t asked = smaller(count - done, electrode_batch);
        int received = -1;
        if (readElectrodeData(slot, port, dock, g_electrode_packets, &received, static_cast<int>(asked)) !=
                SUCCESS ||
            received != static_cast<int>(asked)) {
            return ended_at(ROAD_ELECTRODE_READ, port, done);
        }
        for (std::uint32_t i = 0; i < asked; ++i, ++done) {
            const std::uint32_t byte =
                first_difference(&g_electrode_packets[i], &expected[done], sizeof(electrodePacket));
            if (byte != sizeof(electrodePacket)) {
                return ended_at(ROAD_ELECTRODE_DIFFERS, port, done, byte);
            }
        }
    }
    return ended_at(ROAD_EQUAL);
}

Host_Road_Result compare_adc(const Expected_ADC_Packet* expected, std::uint32_t count) {
    std::uint32_t done = 0;
    while (done < count) {
        const std::uint32_t asked = smaller(count - done, adc_batch);
        int received = -1;
        if (ADC_readPackets(slot, g_adc_infos, g_adc_samples, adc_channels, static_cast<int>(asked),
                            &received) != SUCCESS ||
            received != static_cast<int>(asked)) {
            return ended_at(ROAD_ADC_READ, 0, done);
        }
        for (std::uint32_t i = 0; i < asked; ++i, ++done) {
            const Expected_ADC_Packet& packet = expected[done];
            const std::uint32_t info_byte =
                first_difference(&g_adc_infos[i], &packet.info, sizeof(PacketInfo));
            if (info_byte != sizeof(PacketInfo)) {
                return ended_at(ROAD_ADC_DIFFERS, 0, done, info_byte);
            }
            const std::uint32_t sample_byte =
                first_difference(&g_adc_samples[i * adc_channels], packet.samples, sizeof(packet.samples));
            if (sample_byte != sizeof(packet.samples)) {
                return ended_at(ROAD_ADC_DIFFERS, 0, done,
                                static_cast<std::uint32_t>(sizeof(PacketInfo)) + sample_byte);
            }
        }
    }
    return ended_at(ROAD_EQUAL);
}

// All packets of the recording have been read: none may be left.
Host_Road_Result look_for_left_over() {
    for (int port = first_port; port < first_port + static_cast<int>(port_count); ++port) {
        int available = -1;
        int headroom = -1;
        if (getElectrodeDataFifoState(slot, port, dock, &available, &headroom) != SUCCESS || available != 0 ||
            headroom != static_cast<int>(most_packets)) {
            return ended_at(ROAD_LEFT_OVER, port);
        }
    }
    return ended_at(ROAD_EQUAL);
}

Host_Road_Result stream(const Expectation& expectation) {
    if (start_acquisition(slot, first_port) != SUCCESS) {
        return ended_at(ROAD_NOT_STARTED);
    }
    const electrodePacket* packets = expectation.electrode_packets;
    for (unsigned i = 0; i < port_count; ++i) {
        const std::uint32_t count = expectation.head.electrode_packets[i];
        const Host_Road_Result result = compare_port(first_port + static_cast<int>(i), packets, count);
        if (!is_good(result)) {
            return result;
        }
        packets += count;
    }
    const Host_Road_Result result = compare_adc(expectation.adc_packets, expectation.head.adc_packets);
    return is_good(result) ? look_for_left_over() : result;
}

} // namespace

Host_Road_Result run_host_road(const void* expectation_file, std::size_t size, Host_Road_End end) {
    Expectation expectation;
    if (!read_expectation(expectation_file, size, expectation)) {
        return ended_at(ROAD_BAD_EXPECTATION);
    }
    Host_Road_Result result = open();
    if (is_good(result)) {
        result = stream(expectation);
        if (end == END_BY_STOPPING && stop_acquisition(slot, first_port) != SUCCESS && is_good(result)) {
            result = ended_at(ROAD_NOT_STOPPED);
        }
    }
    if (closeBS(slot) != SUCCESS && is_good(result)) {
        result = ended_at(ROAD_NOT_CLOSED);
    }
    return result;
}

} // namespace Pelgar::ORBE::host
