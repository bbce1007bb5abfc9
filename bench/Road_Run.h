// Benchmarks: one run of the whole library, from the driver's reads to packets in a host's hands: the
// exported functions on a back-end that sends a prepared stream, with a reader thread a port and one for the
// ADC packets. What is measured lies between a warm-up and the end, so that all queues have found their
// sizes.
#pragma once

#include "Bench_Stream.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Pelgar::ORBE::bench {

enum class Pace {
    box,       // transfers come when the box would have filled them
    flat_out,  // as fast as the probes' packets are taken; ADC packets may be dropped
    loss_free, // as fast as all packets are taken: no more on its way than the ADC queue holds
};

struct Road_Options {
    Pace pace = Pace::box;
    double warm_up_seconds = 1.0;
    double seconds = 4.0;
    // Packets that a reader asks for in a call.
    int asked = 1;
    bool gain_calibration = true;
};

// Milliseconds.
struct Latency {
    std::size_t packets = 0;
    double median = 0;
    double p99 = 0;
    double largest = 0;
};

// Of none: all 0.
Latency latency_of(std::vector<double> milliseconds);

struct Thread_Share {
    std::string name;
    double cpu_per_second = 0; // CPU seconds a second of the stream
    double switches_per_second = 0;
};

struct Road_Result {
    Stream_Shape shape{};
    Pace pace = Pace::box;
    double seconds = 0;          // measured
    double bytes_per_second = 0; // of stream
    double real_time = 0;        // multiples of what this shape makes
    std::vector<Thread_Share> threads;
    double cpu_per_data_second = 0;
    double switches_per_second = 0;
    double locks_per_second = 0;
    double allocations_per_second = 0; // in the middle of a round
    std::uint64_t electrode_packets = 0;
    std::uint64_t adc_packets = 0;
    std::uint64_t lost_electrode_packets = 0;
    std::uint64_t lost_adc_packets = 0;
    // From the push of the transfer that brings a packet's last row. The block fill is that part of it which
    // the packet's block spends waiting for its other super frames.
    Latency electrode_total;
    Latency electrode_block_fill;
    Latency electrode_hand_over; // the rest
    Latency adc_hand_over;
    double memory_at_rest_mib = 0;
    double memory_at_most_mib = 0;
};

Road_Result run_road(const Bench_Stream& stream, const Road_Options& options);

const char* name_of(Pace pace);

} // namespace Pelgar::ORBE::bench
