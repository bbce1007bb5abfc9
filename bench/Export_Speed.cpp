#include "Export_Speed.h"

#include "decoding/Recording_Export.h"
#include "formats/Make_Writer.h"
#include "generator/Recording_Generator.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iomanip>
#include <ostream>
#include <stdexcept>

#if !defined(_WIN32)
#include <fcntl.h>
#include <unistd.h>
#endif

namespace Pelgar::ORBE::bench {

namespace {

constexpr int rounds = 3;
constexpr const char* raw_file = "raw.bin";
constexpr const char* output = "exported";

void make_raw_file(double seconds) {
    recording::Recording_Options options;
    options.super_frames =
        static_cast<std::uint64_t>(std::llround(seconds * recording::super_frames_per_second));
    recording::Recording_Generator generator(options);
    std::ofstream file(raw_file, std::ios::binary);
    for (auto bytes = generator.next(); !bytes.empty(); bytes = generator.next()) {
        file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }
    if (!file.flush()) {
        throw std::runtime_error("there is no room for a recording in the folder for temporary files");
    }
}

// Byte for byte, as a program does it that knows no way around.
void copy_plainly() {
    constexpr std::size_t at_once = std::size_t{1} << 20U;
    std::vector<char> bytes(at_once);
    std::filebuf in;
    std::filebuf out;
    in.pubsetbuf(nullptr, 0);
    out.pubsetbuf(nullptr, 0);
    if (in.open(raw_file, std::ios::in | std::ios::binary) == nullptr ||
        out.open(output, std::ios::out | std::ios::binary) == nullptr) {
        throw std::runtime_error("the recording cannot be copied");
    }
    for (auto read = in.sgetn(bytes.data(), at_once); read > 0; read = in.sgetn(bytes.data(), at_once)) {
        if (out.sputn(bytes.data(), read) != read) {
            throw std::runtime_error("there is no room for a copy of the recording");
        }
    }
}

void export_as(recorder::Format format) {
    recorder::Export_Source source;
    source.raw = raw_file;
    for (int port = 1; port <= 4; ++port) {
        source.description.probes.push_back(recorder::default_probe(port));
    }
    source.description.adc = recorder::ADC_Description{};
    source.gain_files.resize(source.description.probes.size());
    const auto writer = recorder::make_writer(format, output, source.description);
    recorder::export_recording(source, *writer, [](std::uint64_t) { return true; });
    for (std::size_t stream = 0; stream < writer->stream_count(); ++stream) {
        if (writer->samples(stream) == 0 || writer->lost_samples(stream) != 0) {
            throw std::runtime_error("the export has not written every sample");
        }
    }
}

// Blocks until the disk has the file.
void reach_disk(const std::filesystem::path& path) {
#if !defined(_WIN32)
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0 || ::fsync(file) != 0) {
        throw std::runtime_error("the disk does not take what was written");
    }
    ::close(file);
#endif
}

void reach_disk() {
    if (std::filesystem::is_regular_file(output)) {
        reach_disk(output);
        return;
    }
    for (const auto& entry : std::filesystem::recursive_directory_iterator(output)) {
        if (entry.is_regular_file()) {
            reach_disk(entry.path());
        }
    }
}

struct Duration {
    double written = 0.0; // s
    double on_disk = 0.0;
};

Duration duration_of(const std::function<void()>& work) {
    using Clock = std::chrono::steady_clock;
    std::filesystem::remove_all(output);
    const auto begin = Clock::now();
    const auto since_begin = [begin] { return std::chrono::duration<double>(Clock::now() - begin).count(); };
    Duration duration;
    work();
    duration.written = since_begin();
    reach_disk();
    duration.on_disk = since_begin();
    return duration;
}

double median(const std::array<Duration, rounds>& durations, double Duration::*which) {
    std::array<double, rounds> values{};
    std::transform(durations.begin(), durations.end(), values.begin(),
                   [which](const Duration& duration) { return duration.*which; });
    std::sort(values.begin(), values.end());
    return values[rounds / 2];
}

} // namespace

std::vector<Export_Rate> measure_export(double seconds) {
    make_raw_file(seconds);

    struct Contender {
        std::string name;
        std::function<void()> work;
        std::array<Duration, rounds> durations;
    };

    std::vector<Contender> contenders{{"plain copy", copy_plainly, {}}};
    for (const recorder::Format format : {recorder::Format::spikeglx, recorder::Format::open_ephys}) {
        contenders.push_back(
            {"export " + recorder::format_name(format), [format] { export_as(format); }, {}});
    }
    for (std::size_t round = 0; round < rounds; ++round) {
        for (Contender& contender : contenders) {
            contender.durations[round] = duration_of(contender.work);
        }
    }
    const auto bytes = static_cast<double>(std::filesystem::file_size(raw_file));
    std::filesystem::remove_all(output);
    std::filesystem::remove(raw_file);
    std::vector<Export_Rate> rates;
    for (const Contender& contender : contenders) {
        rates.push_back({contender.name, bytes / median(contender.durations, &Duration::written),
                         bytes / median(contender.durations, &Duration::on_disk)});
    }
    return rates;
}

void print_export(std::ostream& out, const std::vector<Export_Rate>& rates) {
    out << "\nraw recording of 4 probes and the ADC inputs, files in the folder for temporary files\n";
    const auto print_rate = [&](double rate, double copy) {
        out << std::fixed << std::setprecision(2) << rate / 1e9 << " GB/s, " << rate / copy << " of the copy";
    };
    for (const Export_Rate& rate : rates) {
        constexpr int name_width = 20;
        out << "  " << std::left << std::setw(name_width) << rate.name << std::right << "written ";
        print_rate(rate.bytes_per_second, rates.front().bytes_per_second);
        out << ";   on the disk ";
        print_rate(rate.bytes_per_second_to_disk, rates.front().bytes_per_second_to_disk);
        out << "\n";
    }
    out << std::flush;
}

void write_exports(Json_Writer& json, const std::vector<Export_Rate>& rates) {
    json.begin_list("exports");
    for (const Export_Rate& rate : rates) {
        json.begin_object();
        json.text("name", rate.name);
        json.number("bytes_per_second", rate.bytes_per_second);
        json.number("share_of_copy", rate.bytes_per_second / rates.front().bytes_per_second);
        json.number("bytes_per_second_to_disk", rate.bytes_per_second_to_disk);
        json.number("share_of_copy_to_disk",
                    rate.bytes_per_second_to_disk / rates.front().bytes_per_second_to_disk);
        json.end_object();
    }
    json.end_list();
}

} // namespace Pelgar::ORBE::bench
