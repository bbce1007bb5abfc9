#include "Host_Source.h"

#include "Probe_Set_Up.h"

#include <algorithm>
#include <exception>

namespace Pelgar::ORBE::view {

namespace {

constexpr double adc_range_volts = 5.0;
constexpr auto between_reads = std::chrono::milliseconds(4);
constexpr auto between_health = std::chrono::milliseconds(500);
constexpr double rate = recorder::ap_sample_rate;

} // namespace

Host_Source::Host_Source(const Host_Choice& choice)
    : m_name(choice.simulation ? choice.simulation->filename().string() : "box"),
      m_is_simulation(choice.simulation.has_value()), m_bring_up(bring_up(choice)),
      m_histories(m_bring_up.probes, true, adc_range_volts, choice.spike_microvolts),
      m_batch(std::make_unique<recorder::Probe_Source::Batch>()),
      m_adc_batch(std::make_unique<recorder::ADC_Source::Batch>()) {
    for (const recorder::Probe_Description& probe : m_bring_up.probes) {
        m_probes.emplace_back(probe.port);
    }
    m_thread = std::thread(&Host_Source::run, this);
}

Host_Source::~Host_Source() {
    m_stops = true;
    m_thread.join();
    m_box.stop();
    m_box.close();
}

Host_Source::Bring_Up Host_Source::bring_up(const Host_Choice& choice) const {
    recorder::Probe_Options options;
    options.calibration = choice.calibration;
    options.may_lack_calibration = true; // what is looked at need not be exact
    Bring_Up result;
    result.locked_ports = m_box.ports();
    for (const int port : result.locked_ports) {
        result.probes.push_back(
            recorder::set_up_probe(recorder::Opened_Box::probe_slot, port, options, m_is_simulation));
    }
    return result;
}

Source_Status Host_Source::status() const {
    Source_Status status;
    status.name = m_name;
    status.kind = m_is_simulation ? "simulation" : "box";
    status.is_streaming = m_streams;
    status.position = m_position;
    status.length = static_cast<double>(m_position) / rate;
    const std::lock_guard lock(m_mutex);
    status.problem = m_problem;
    return status;
}

bool Host_Source::stream(bool streams) {
    m_shall_stream = streams;
    return true;
}

void Host_Source::run() {
    try {
        run_until_stopped();
    } catch (const std::exception& error) {
        const std::lock_guard lock(m_mutex);
        m_problem = error.what();
    }
}

void Host_Source::run_until_stopped() {
    while (!m_stops) {
        follow_wish();
        if (!m_streams || !read()) {
            std::this_thread::sleep_for(between_reads);
        }
        const auto now = Clock::now();
        if (m_streams && now - m_health_at >= between_health) {
            note_health(now);
        }
    }
}

// Starts or stops the streams when that is wanted. Samples are counted anew from every start.
void Host_Source::follow_wish() {
    if (m_shall_stream == m_streams) {
        return;
    }
    if (m_streams) {
        m_box.stop();
        m_streams = false;
        return;
    }
    m_histories.clear();
    m_intakes.assign(m_probes.size(), Packet_Intake(0));
    m_adc_intake = Packet_Intake(0);
    m_position = 0;
    m_box.start();
    m_streams = true;
    m_health_at = Clock::now();
    m_health_samples.clear();
    m_health_lost.clear();
}

// What there is; false when that is nothing.
bool Host_Source::read() {
    bool has_read = false;
    std::uint64_t end = m_position;
    for (std::size_t probe = 0; probe < m_probes.size(); ++probe) {
        m_batch->count = 0;
        m_probes[probe].read(*m_batch);
        if (m_batch->count != 0) {
            m_intakes[probe].take(m_histories.probe(probe), {m_batch->packets, m_batch->count});
            end = std::max(end, m_intakes[probe].end());
            has_read = true;
        }
    }
    m_adc_batch->count = 0;
    m_adc.read(*m_adc_batch);
    if (m_adc_batch->count != 0) {
        m_adc_intake.take(*m_histories.adc(), {m_adc_batch->infos, m_adc_batch->count},
                          {m_adc_batch->rows, m_adc_batch->count * Packet_Intake::adc_row_length});
        if (m_probes.empty()) {
            end = std::max(end, m_adc_intake.end());
        }
        has_read = true;
    }
    m_position = end;
    return has_read;
}

void Host_Source::note_health(Clock::time_point now) {
    const double seconds = std::chrono::duration<double>(now - m_health_at).count();
    std::vector<std::uint64_t> samples;
    std::vector<std::uint64_t> lost;
    for (std::size_t probe = 0; probe < m_probes.size(); ++probe) {
        const Probe_History::Reading reading(m_histories.probe(probe));
        samples.push_back(reading.samples());
        lost.push_back(reading.lost_samples());
    }
    const ADC_History::Reading adc(*m_histories.adc());
    samples.push_back(adc.samples());
    lost.push_back(adc.lost_samples());
    if (!m_health_samples.empty()) {
        Health health;
        health.seconds = static_cast<double>(m_position) / rate;
        for (std::size_t port = 0; port < port_count; ++port) {
            health.streams[port].link_lock = 0.0;
        }
        for (const int port : m_bring_up.locked_ports) {
            health.streams[static_cast<std::size_t>(port) - 1].link_lock = 1.0;
        }
        for (std::size_t stream = 0; stream < samples.size(); ++stream) {
            const bool is_probe = stream < m_probes.size();
            const std::size_t place =
                is_probe ? static_cast<std::size_t>(m_bring_up.probes[stream].port) - 1 : port_count;
            Stream_Health& line = health.streams[place];
            line.rate = static_cast<double>(samples[stream] - m_health_samples[stream]) / seconds;
            line.lost_samples = static_cast<double>(lost[stream] - m_health_lost[stream]);
            line.queue_fill = is_probe ? m_probes[stream].fill() : m_adc.fill();
        }
        m_histories.health().add(health);
    }
    m_health_at = now;
    m_health_samples = std::move(samples);
    m_health_lost = std::move(lost);
}

} // namespace Pelgar::ORBE::view
