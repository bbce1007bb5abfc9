#include "Road_Report.h"

#include <iomanip>
#include <ostream>
#include <string>

namespace Pelgar::ORBE::bench {

namespace {

struct Named_Latency {
    const char* name;
    const char* json_name;
    Latency Road_Result::*latency;
};

constexpr Named_Latency latencies[] = {
    {"electrode packet, from its last row", "electrode_total", &Road_Result::electrode_total},
    {"  of that filling the block", "electrode_block_fill", &Road_Result::electrode_block_fill},
    {"  the rest, to the host", "electrode_hand_over", &Road_Result::electrode_hand_over},
    {"ADC packet, to the host", "adc_hand_over", &Road_Result::adc_hand_over},
};

std::string name_of(Stream_Shape shape) {
    return std::to_string(shape.ports) + (shape.ports == 1 ? " port, " : " ports, ") +
           std::to_string(shape.rhd_streams) + " RHD streams";
}

void print_number(std::ostream& out, int width, int digits, double value) {
    out << std::right << std::fixed << std::setw(width) << std::setprecision(digits) << value;
}

void print_latencies(std::ostream& out, const Road_Result& result) {
    out << "  latency, ms" << std::string(27, ' ') << "median       p99   largest\n";
    for (const Named_Latency& named : latencies) {
        const Latency& latency = result.*named.latency;
        if (latency.packets != 0) {
            out << "  " << std::left << std::setw(36) << named.name;
            for (const double value : {latency.median, latency.p99, latency.largest}) {
                print_number(out, 10, 2, value);
            }
            out << "\n";
        }
    }
}

} // namespace

void print_run(std::ostream& out, const Road_Result& result) {
    out << "\nwhole road, " << name_of(result.shape) << ", " << bench::name_of(result.pace) << ": ";
    print_number(out, 0, 2, result.bytes_per_second / 1e9);
    out << " GB/s, ";
    print_number(out, 0, 1, result.bytes_per_second / full_box_bytes_per_second);
    out << " x full box, ";
    print_number(out, 0, 1, result.real_time);
    out << " x real time\n"
        << "  lost: " << result.lost_electrode_packets << " of "
        << result.electrode_packets + result.lost_electrode_packets << " electrode packets, "
        << result.lost_adc_packets << " of " << result.adc_packets + result.lost_adc_packets
        << " ADC packets\n";

    out << "  thread        CPU-s a second of data   context switches a second\n";
    for (const Thread_Share& thread : result.threads) {
        out << "  " << std::left << std::setw(14) << thread.name;
        print_number(out, 22, 4, thread.cpu_per_second);
        print_number(out, 28, 0, thread.switches_per_second);
        out << "\n";
    }
    out << "  " << std::left << std::setw(14) << "all";
    print_number(out, 22, 4, result.cpu_per_data_second);
    print_number(out, 28, 0, result.switches_per_second);
    out << "\n  a second: ";
    print_number(out, 0, 0, result.locks_per_second);
    out << " mutex locks, ";
    print_number(out, 0, 1, result.allocations_per_second);
    out << " allocations in steady state\n  memory: ";
    print_number(out, 0, 0, result.memory_at_rest_mib);
    out << " MiB at rest, ";
    print_number(out, 0, 0, result.memory_at_most_mib);
    out << " MiB at most\n";
    if (result.pace == Pace::box) {
        print_latencies(out, result);
    }
    out << std::flush;
}

void print_growth(std::ostream& out, const std::vector<Road_Result>& results) {
    out << "\nshape                     pace         GB/s  x real time   CPU-s   switches/s  lost ADC   "
           "MiB\n";
    for (const Road_Result& result : results) {
        out << std::left << std::setw(26) << name_of(result.shape) << std::setw(10)
            << bench::name_of(result.pace);
        print_number(out, 7, 3, result.bytes_per_second / 1e9);
        print_number(out, 13, 1, result.real_time);
        print_number(out, 8, 4, result.cpu_per_data_second);
        print_number(out, 13, 0, result.switches_per_second);
        print_number(out, 10, 0, static_cast<double>(result.lost_adc_packets));
        print_number(out, 6, 0, result.memory_at_most_mib);
        out << "\n";
    }
    out << std::flush;
}

void write_runs(Json_Writer& json, const std::vector<Road_Result>& results) {
    json.begin_list("whole_road");
    for (const Road_Result& result : results) {
        json.begin_object();
        json.number("ports", result.shape.ports);
        json.number("rhd_streams", result.shape.rhd_streams);
        json.text("pace", bench::name_of(result.pace));
        json.number("seconds", result.seconds);
        json.number("bytes_per_second", result.bytes_per_second);
        json.number("x_full_box", result.bytes_per_second / full_box_bytes_per_second);
        json.number("x_real_time", result.real_time);
        json.number("cpu_seconds_per_second_of_data", result.cpu_per_data_second);
        json.number("context_switches_per_second", result.switches_per_second);
        json.number("locks_per_second", result.locks_per_second);
        json.number("allocations_per_second", result.allocations_per_second);
        json.number("electrode_packets", static_cast<double>(result.electrode_packets));
        json.number("lost_electrode_packets", static_cast<double>(result.lost_electrode_packets));
        json.number("adc_packets", static_cast<double>(result.adc_packets));
        json.number("lost_adc_packets", static_cast<double>(result.lost_adc_packets));
        json.number("memory_at_rest_mib", result.memory_at_rest_mib);
        json.number("memory_at_most_mib", result.memory_at_most_mib);
        json.begin_list("threads");
        for (const Thread_Share& thread : result.threads) {
            json.begin_object();
            json.text("name", thread.name);
            json.number("cpu_seconds_per_second_of_data", thread.cpu_per_second);
            json.number("context_switches_per_second", thread.switches_per_second);
            json.end_object();
        }
        json.end_list();
        json.begin_object("latency_ms");
        for (const Named_Latency& named : latencies) {
            const Latency& latency = result.*named.latency;
            if (latency.packets != 0) {
                json.begin_object(named.json_name);
                json.number("packets", static_cast<double>(latency.packets));
                json.number("median", latency.median);
                json.number("p99", latency.p99);
                json.number("largest", latency.largest);
                json.end_object();
            }
        }
        json.end_object();
        json.end_object();
    }
    json.end_list();
}

} // namespace Pelgar::ORBE::bench
