#include "Recorder.h"

#include "ADC_Source.h"
#include "Probe_Source.h"
#include "Sample_Counter.h"
#include "Stream.h"
#include "adapter/Adapter_State.h"
#include "description/Description_File.h"
#include "formats/Make_Writer.h"
#include "library_run/Interrupt.h"
#include "terminal/Text_Format.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <utility>

namespace Pelgar::ORBE::recorder {

namespace {

constexpr std::chrono::milliseconds look_interval{10};
constexpr std::chrono::seconds patience_for_first_sample{5};
constexpr std::chrono::seconds patience_for_other_streams{1};
// A recording that plays has ended when nothing has come for so long; a box does not send any more.
constexpr std::chrono::seconds silence_behind_recording{1};
constexpr std::chrono::seconds silence_of_box{3};
constexpr double samples_per_second = ap_sample_rate;
constexpr std::uint64_t samples_per_packet = 12;
// What the streams of one recording may differ by when all end at once.
constexpr std::uint64_t uneven_end = 3000;

std::uint64_t whole_packets(std::uint64_t samples) {
    return (samples + samples_per_packet - 1) / samples_per_packet * samples_per_packet;
}

Start_Time now_of_calendar() {
    return std::chrono::time_point_cast<std::chrono::milliseconds>(std::chrono::system_clock::now());
}

} // namespace

bool Record_Result::lost_something() const {
    return lost_bytes != 0 || !loss.empty() ||
           std::any_of(streams.begin(), streams.end(), [](const Live_Line& line) { return line.lost != 0; });
}

Recorder::Recorder(Opened_Box& box, const Record_Options& options, Recording_Description description,
                   int user_errors)
    : m_box(box), m_options(options), m_description(std::move(description)), m_live_lines(user_errors) {
    for (const Probe_Description& probe : m_description.probes) {
        m_streams.push_back(std::make_unique<Stream<Probe_Source>>(Probe_Source(probe.port)));
    }
    m_streams.push_back(std::make_unique<Stream<ADC_Source>>(ADC_Source()));
    if (m_options.seconds) {
        m_wanted_samples =
            whole_packets(static_cast<std::uint64_t>(std::llround(*m_options.seconds * samples_per_second)));
    }
}

Record_Result Recorder::run() {
    start();
    try {
        wait_for_first_samples();
        make_writer();
        record();
    } catch (...) {
        m_box.stop();
        throw;
    }
    finish();
    return std::move(m_result);
}

void Recorder::start() {
    m_box.start();
    m_started_at = now_of_calendar();
    for (const auto& stream : m_streams) {
        stream->start_reading();
    }
    m_last_news = Clock::now();
}

// All files begin with the first sample that every stream has. As a rule that is the very first one.
void Recorder::wait_for_first_samples() {
    const auto begin = Clock::now();
    std::optional<Clock::time_point> first_came;
    const auto is_there = [](const auto& stream) { return stream->first_sample().has_value(); };
    while (!std::all_of(m_streams.begin(), m_streams.end(), is_there)) {
        const auto now = Clock::now();
        if (!first_came && std::any_of(m_streams.begin(), m_streams.end(), is_there)) {
            first_came = now;
        }
        if (first_came && now - *first_came > patience_for_other_streams) {
            leave_silent_adc_out();
            return wait_for_first_samples();
        }
        if (now - begin > patience_for_first_sample) {
            throw std::runtime_error("the box sends nothing");
        }
        if (tools::interrupted()) {
            throw std::runtime_error("stopped before the first sample came");
        }
        std::this_thread::sleep_for(look_interval);
    }
}

// There may be no headstage for them. Throws for a probe that is silent.
void Recorder::leave_silent_adc_out() {
    for (const auto& stream : m_streams) {
        if (!stream->first_sample() && stream != m_streams.back()) {
            throw std::runtime_error(stream->name() + " sends nothing");
        }
    }
    m_streams.back()->stop_reading();
    m_streams.pop_back();
    m_description.adc.reset();
}

void Recorder::make_writer() {
    std::uint64_t first = 0;
    for (const auto& stream : m_streams) {
        first = std::max(first, *stream->first_sample());
    }
    // Probes begin with their first whole packet, which may be a few samples behind the first one.
    m_description.first_sample = first < samples_per_packet ? 0 : whole_packets(first);
    m_description.start_time = m_started_at;
    if (m_options.format == raw_format) {
        write_description(m_options.folder, raw_format, m_description);
        m_writer = std::make_unique<Sample_Counter>(m_description);
    } else {
        if (m_wanted_samples) {
            m_description.end_sample = m_description.first_sample + *m_wanted_samples;
        }
        m_writer =
            recorder::make_writer(format_of(m_options.format).value(), m_options.folder, m_description);
    }
    for (std::size_t i = 0; i < m_streams.size(); ++i) {
        m_streams[i]->start_writing(*m_writer, i);
    }
}

void Recorder::record() {
    m_shown_samples.assign(m_streams.size(), 0);
    m_shown_at = Clock::now();
    while (!tools::interrupted() && !has_all()) {
        const auto now = Clock::now();
        note_write_problems();
        if (!m_result.write_problem.empty()) {
            return;
        }
        if (is_silent(now)) {
            if (m_options.simulation) {
                m_result.is_short = m_wanted_samples.has_value();
            } else {
                m_result.loss = "the box has stopped sending";
            }
            return;
        }
        if (m_live_lines.are_due(now)) {
            m_live_lines.show(lines(), disk_left(), now);
        }
        std::this_thread::sleep_for(look_interval);
    }
}

void Recorder::note_write_problems() {
    for (const auto& stream : m_streams) {
        if (m_result.write_problem.empty()) {
            m_result.write_problem = stream->problem();
        }
    }
    if (const auto controller = npoe_adapter::current_controller()) {
        if (const auto capture = controller->raw_capture_state(); capture && m_result.write_problem.empty()) {
            m_result.write_problem = capture->problem;
        }
    }
}

bool Recorder::has_all() const {
    if (!m_wanted_samples) {
        return false;
    }
    for (std::size_t i = 0; i < m_streams.size(); ++i) {
        if (m_writer->samples(i) < *m_wanted_samples) {
            return false;
        }
    }
    return true;
}

bool Recorder::is_silent(Clock::time_point now) {
    std::uint64_t packets = 0;
    for (const auto& stream : m_streams) {
        packets += stream->packets();
    }
    if (packets != m_packets) {
        m_packets = packets;
        m_last_news = now;
    }
    return now - m_last_news > (m_options.simulation ? silence_behind_recording : silence_of_box);
}

std::vector<Live_Line> Recorder::lines() {
    const auto now = Clock::now();
    const std::chrono::duration<double> elapsed = now - m_shown_at;
    m_shown_at = now;
    std::vector<Live_Line> lines;
    for (std::size_t i = 0; i < m_streams.size(); ++i) {
        const std::uint64_t samples = m_writer->samples(i);
        const auto added = static_cast<double>(samples - m_shown_samples[i]);
        m_shown_samples[i] = samples;
        lines.push_back({m_streams[i]->name(), static_cast<double>(samples) / samples_per_second,
                         added * m_streams[i]->bytes_a_sample() / std::max(elapsed.count(), 1e-3),
                         m_streams[i]->library_fill(), m_writer->lost_samples(i)});
    }
    return lines;
}

std::uint64_t Recorder::disk_left() const {
    std::error_code error;
    const auto space = std::filesystem::space(m_options.folder, error);
    return error ? 0 : space.available;
}

// What has been read is written; what the disk does not take is told, and the files are closed all the same.
void Recorder::finish() {
    for (const auto& stream : m_streams) {
        stream->stop_reading();
    }
    for (const auto& stream : m_streams) {
        stream->join();
    }
    note_write_problems();
    m_box.stop();
    look_at_raw_capture();
    try {
        m_writer->finish();
    } catch (const std::exception& error) {
        if (m_result.write_problem.empty()) {
            m_result.write_problem = error.what();
        }
    }
    m_result.streams = lines();
    m_result.bytes += m_writer->bytes_written();
    look_for_short_streams();
}

void Recorder::look_at_raw_capture() {
    const auto controller = npoe_adapter::current_controller();
    auto state = controller ? controller->raw_capture_state() : std::nullopt;
    if (!state) {
        return;
    }
    while (!state->is_settled) {
        std::this_thread::sleep_for(look_interval);
        state = controller->raw_capture_state();
    }
    note_write_problems();
    m_result.bytes = state->written;
    m_result.lost_bytes = state->lost;
}

// A stream that ended before the others, as that of a headstage that was unplugged.
void Recorder::look_for_short_streams() {
    double longest = 0.0;
    for (const Live_Line& line : m_result.streams) {
        longest = std::max(longest, line.seconds);
    }
    for (const Live_Line& line : m_result.streams) {
        const double missing = longest - line.seconds;
        if (missing * samples_per_second > static_cast<double>(uneven_end) &&
            m_result.write_problem.empty()) {
            m_result.loss += (m_result.loss.empty() ? "" : "; ") + line.stream +
                             tools::text_of(" ends %.1f s before the others", missing);
        }
    }
}

} // namespace Pelgar::ORBE::recorder
