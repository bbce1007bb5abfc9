#include "Fault_List.h"

#include "stream_format/Wire_Format.h"

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sys/resource.h>
#include <system_error>
#include <utility>

namespace Pelgar::ORBE::test {

namespace {

using Faults = std::vector<Matrix_Fault>;
using Open_Result = Virtual_Box::Open_Result;
using Read_Fault = DMA_Read_Fault;

constexpr std::size_t probe_port = A_Way::port - 1;
constexpr std::uint32_t row_bytes = 16;

// Where the rows are that a phase's damage strikes: among the first of a run, in the second block, in the
// read that is under way when the run is stopped.
std::uint64_t tick_of(Phase phase) {
    switch (phase) {
    case Phase::start:
        return 5;
    case Phase::stream:
        return 2500;
    default:
        return 2380;
    }
}

// ---- Links.

Matrix_Fault link_fault(const char* name, Link_Fault kind, bool goes_on) {
    Matrix_Fault fault{"Probe link", name, Part::link};
    fault.strike = [kind, goes_on](Bench& bench, Phase, const Phase_Use& use) {
        const std::size_t middle = use.link_frames / 2 + 1;
        goes_on ? bench.headstage().fail_from(middle, kind) : bench.headstage().fail_once(middle, kind);
    };
    fault.heal = [](Bench& bench) { bench.headstage().clear_faults(); };
    return fault;
}

Matrix_Fault wrong_id(const char* name, std::uint8_t device, std::uint8_t right) {
    constexpr std::uint8_t device_id = 0x1E;
    constexpr std::uint8_t wrong = 77;
    Matrix_Fault fault{"Probe link", name, Part::ids};
    fault.strike = [device](Bench& bench, Phase, const Phase_Use&) {
        bench.headstage().set(device, device_id, wrong);
    };
    fault.heal = [device, right](Bench& bench) { bench.headstage().set(device, device_id, right); };
    return fault;
}

void add_link_faults(Faults& faults) {
    faults.push_back(link_fault("the headstage falls silent", Link_Fault::silence, true));
    faults.push_back(link_fault("one answer is missing", Link_Fault::silence, false));
    faults.push_back(link_fault("one wrong acknowledge", Link_Fault::wrong_acknowledge, false));
    faults.push_back(link_fault("one write acknowledged and lost", Link_Fault::lost_write, false));
    faults.push_back(link_fault("one answer comes late", Link_Fault::late, false));
    faults.push_back(wrong_id("wrong id of the deserializer", Virtual_Headstage::deserializer, 10));
    faults.push_back(wrong_id("wrong id of the serializer", Virtual_Headstage::serializer, 9));
}

// ---- Locks.

Matrix_Fault lost_locks(const char* name, std::size_t first, std::size_t last) {
    Matrix_Fault fault{"PLL", name, Part::locks};
    const auto lock = [first, last](Bench& bench, std::optional<std::size_t> look) {
        for (std::size_t port = first; port <= last; ++port) {
            bench.box().lock_at_look(port, look);
        }
    };
    fault.strike = [lock](Bench& bench, Phase, const Phase_Use&) { lock(bench, std::nullopt); };
    fault.heal = [lock](Bench& bench) { lock(bench, 1); };
    return fault;
}

void add_lost_locks(Faults& faults) {
    faults.push_back(lost_locks("lost on the port of the probe", probe_port, probe_port));
    faults.push_back(lost_locks("lost on all ports", 0, box_port_count - 1));
}

// ---- The driver.

Matrix_Fault failing_driver(const char* name, Open_Result result) {
    Matrix_Fault fault{"Driver", name, Part::driver};
    fault.strike = [result](Bench& bench, Phase, const Phase_Use&) {
        bench.box().queue_open_results({result});
    };
    return fault;
}

void add_driver_faults(Faults& faults) {
    faults.push_back(failing_driver("no box", Open_Result::no_box));
    faults.push_back(failing_driver("the registers cannot be mapped", Open_Result::mapping_fails));
}

// ---- Reads of the stream.

// The reads that begin next.
Matrix_Fault next_reads(const char* name, std::vector<Read_Fault> kinds) {
    Matrix_Fault fault{"DMA", name, Part::next_read};
    fault.strike = [kinds = std::move(kinds)](Bench& bench, Phase, const Phase_Use&) {
        std::uint64_t read = bench.stream().reads();
        for (const Read_Fault& kind : kinds) {
            bench.stream().fail_read(++read, kind);
        }
    };
    return fault;
}

// The read that is under way, or else the next.
Matrix_Fault this_read(const char* name, Read_Fault kind) {
    Matrix_Fault fault{"DMA", name, Part::read};
    fault.strike = [kind](Bench& bench, Phase, const Phase_Use& use) {
        bench.stream().fail_read(bench.stream().reads() + (use.has_read_under_way ? 0 : 1), kind);
    };
    fault.heal = [](Bench& bench) { bench.stream().release_stalled_read(); };
    return fault;
}

void add_read_faults(Faults& faults) {
    using Kind = Read_Fault::Kind;
    faults.push_back(next_reads("a short read", {{Kind::short_read, 256 * row_bytes}}));
    faults.push_back(
        next_reads("a read that cuts a row",
                   {{Kind::short_read, 256 * row_bytes + row_bytes / 2}, {Kind::short_read, row_bytes / 2}}));
    faults.push_back(next_reads("an empty read", {{Kind::short_read, 0}}));
    faults.push_back(next_reads("a read fails at once", {{Kind::fails, 0}}));
    faults.push_back(this_read("a read fails at its end", {Kind::fails_late, 0}));
    faults.push_back(this_read("a read does not end", {Kind::stalls, 0}));
    faults.push_back(next_reads("a read says too much", {{Kind::over_long, 256 * row_bytes}}));
}

// ---- Rows.

// What of a stream a fault can strike, in a tick: so many in so many ticks.
struct Things {
    std::uint64_t count;
    std::uint64_t ticks = 1;
};

Matrix_Fault damaged_rows(const char* name, recording::Fault_Kind kind, unsigned stream, Things things,
                          std::uint64_t thing) {
    Matrix_Fault fault{"Rows", name, Part::read};
    fault.damage = [=](Phase phase) {
        if (phase != Phase::start && phase != Phase::stream && phase != Phase::stop) {
            return std::vector<recording::Fault>{};
        }
        recording::Fault damage;
        damage.kind = kind;
        damage.stream = stream;
        damage.position = tick_of(phase) * things.count / things.ticks + thing;
        return std::vector{damage};
    };
    return fault;
}

void add_row_faults(Faults& faults) {
    using recording::Fault_Kind;
    constexpr Things rows{recording::rows_per_super_frame};
    constexpr Things rhd_rows{recording::rhd_frame_words(0), recording::row_words};
    constexpr Things frames{1};
    const auto port = static_cast<unsigned>(probe_port);
    const unsigned rhd = recording::rhd_stream;
    faults.push_back(damaged_rows("a probe's row is lost", Fault_Kind::lost_row, port, rows, 30));
    faults.push_back(damaged_rows("a row of the ADC stream is lost", Fault_Kind::lost_row, rhd, rhd_rows, 1));
    faults.push_back(damaged_rows("a wrong marker", Fault_Kind::bad_marker, port, rows, 30));
    faults.push_back(damaged_rows("a wrong lane tag", Fault_Kind::wrong_tag, port, rows, 30));
    faults.push_back(
        damaged_rows("a super frame without its flag", Fault_Kind::missing_flag, port, frames, 0));
    faults.push_back(damaged_rows("an RHD frame that ends early", Fault_Kind::cut_frame, rhd, frames, 0));
    faults.push_back(damaged_rows("a row of an unknown stream", Fault_Kind::unknown_row, port, rows, 30));
}

// ---- Files.

Matrix_Fault bad_calibration(const char* name, const char* file, bool is_there) {
    Matrix_Fault fault{"Files", name, Part::calibration};
    fault.strike = [file, is_there](Bench&, Phase, const Phase_Use&) {
        if (is_there) {
            std::filesystem::resize_file(file, std::filesystem::file_size(file) / 2);
        } else {
            std::filesystem::remove(file);
        }
    };
    fault.heal = [](Bench&) { Bench::write_calibration(); };
    return fault;
}

void add_calibration_faults(Faults& faults) {
    faults.push_back(bad_calibration("the ADC calibration is missing", A_Way::adc_calibration, false));
    faults.push_back(bad_calibration("the ADC calibration is cut off", A_Way::adc_calibration, true));
    faults.push_back(bad_calibration("the gain calibration is missing", A_Way::gain_calibration, false));
    faults.push_back(bad_calibration("the gain calibration is cut off", A_Way::gain_calibration, true));
}

constexpr const char* capture_folder = "capture";
constexpr const char* capture_file = "capture/raw.bin";

void prepare_capture() {
    std::ofstream("ORBE_RAW_CAPTURE") << capture_file << "\n";
    std::filesystem::create_directory(capture_folder);
}

Matrix_Fault vanished_capture_folder() {
    Matrix_Fault fault{"Files", "the folder of the raw capture vanishes", Part::capture};
    fault.prepare = prepare_capture;
    fault.strike = [](Bench&, Phase, const Phase_Use&) { std::filesystem::remove_all(capture_folder); };
    fault.heal = [](Bench&) { std::filesystem::create_directory(capture_folder); };
    return fault;
}

// No file may become longer than this, which is how a process sees a full disk without one.
void limit_files(rlim_t bytes) {
    // Otherwise the first write that is refused ends the process.
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{bytes, RLIM_INFINITY};
    if (setrlimit(RLIMIT_FSIZE, &limit) != 0) {
        throw std::system_error(errno, std::generic_category(), "setrlimit");
    }
}

Matrix_Fault full_disk(const char* name, Part part) {
    Matrix_Fault fault{"Files", name, part};
    fault.strike = [](Bench&, Phase, const Phase_Use&) { limit_files(0); };
    fault.heal = [](Bench&) { limit_files(RLIM_INFINITY); };
    return fault;
}

void add_full_disks(Faults& faults) {
    faults.push_back(full_disk("the disk of the log and of standard output is full", Part::disk));
    faults.push_back(full_disk("the disk of the raw capture is full", Part::capture));
    faults.back().prepare = prepare_capture;
}

} // namespace

std::vector<Matrix_Fault> all_faults() {
    Faults faults;
    add_link_faults(faults);
    add_lost_locks(faults);
    add_driver_faults(faults);
    add_read_faults(faults);
    add_row_faults(faults);
    add_calibration_faults(faults);
    faults.push_back(vanished_capture_folder());
    add_full_disks(faults);
    return faults;
}

} // namespace Pelgar::ORBE::test
