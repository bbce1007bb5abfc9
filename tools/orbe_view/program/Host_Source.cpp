#include "Host_Source.h"

#include "Probe_Set_Up.h"

#include <algorithm>
#include <exception>

namespace Pelgar::ORBE::view {

namespace {

constexpr double adc_range_volts = 5.0;
constexpr auto between_reads = std::chrono::milliseconds(4);
constexpr double rate = recorder::ap_sample_rate;

} // namespace

Host_Source::Host_Source(const Host_Choice& choice)
    : m_name(choice.simulation ? choice.simulation->filename().string() : "box"),
      m_is_simulation(choice.simulation.has_value()),
      m_histories(bring_up(choice), true, adc_range_volts, choice.spike_microvolts),
      m_batch(std::make_unique<recorder::Probe_Source::Batch>()),
      m_adc_batch(std::make_unique<recorder::ADC_Source::Batch>()) {
    for (std::size_t probe = 0; probe < m_histories.probe_count(); ++probe) {
        m_probes.emplace_back(m_histories.probe(probe).description().port);
    }
    m_thread = std::thread(&Host_Source::run, this);
}

Host_Source::~Host_Source() {
    m_stops = true;
    m_thread.join();
    m_box.stop();
    m_box.close();
}

std::vector<recorder::Probe_Description> Host_Source::bring_up(const Host_Choice& choice) const {
    recorder::Probe_Options options;
    options.calibration = choice.calibration;
    options.may_lack_calibration = true; // what is looked at need not be exact
    std::vector<recorder::Probe_Description> probes;
    for (const int port : m_box.ports()) {
        probes.push_back(
            recorder::set_up_probe(recorder::Opened_Box::probe_slot, port, options, m_is_simulation));
    }
    return probes;
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
    return !m_has_failed;
}

void Host_Source::run() {
    try {
        run_until_stopped();
    } catch (const std::exception& error) {
        m_box.stop();
        const std::lock_guard lock(m_mutex);
        m_problem = std::string("Nothing streams any more: ") + error.what();
        m_streams = false;
        m_has_failed = true;
    }
}

void Host_Source::run_until_stopped() {
    while (!m_stops) {
        follow_wish();
        if (!m_streams || !read()) {
            std::this_thread::sleep_for(between_reads);
        }
        const auto now = Clock::now();
        if (m_streams && m_health.is_due(now)) {
            look_at_health(now);
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
    m_histories.begin_anew();
    m_intakes.assign(m_probes.size(), Packet_Intake(0));
    m_adc_intake = Packet_Intake(0);
    m_position = 0;
    m_health.begin(Clock::now());
    m_box.start();
    m_streams = true;
}

// What there is; false when that is nothing.
bool Host_Source::read() {
    bool has_read = false;
    std::uint64_t end = m_position;
    for (std::size_t probe = 0; probe < m_probes.size(); ++probe) {
        m_batch->count = 0;
        m_probes[probe].read(*m_batch);
        if (m_batch->count != 0) {
            m_health.came(stream_of(probe));
            m_intakes[probe].take(m_histories.probe(probe), {m_batch->packets, m_batch->count});
            end = std::max(end, m_intakes[probe].end());
            has_read = true;
        }
    }
    m_adc_batch->count = 0;
    m_adc.read(*m_adc_batch);
    if (m_adc_batch->count != 0) {
        m_health.came(port_count);
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

void Host_Source::look_at_health(Clock::time_point now) {
    Health_Watch::Queue_Fills fills;
    fills.fill(unknown);
    for (std::size_t probe = 0; probe < m_probes.size(); ++probe) {
        fills[stream_of(probe)] = m_probes[probe].fill();
    }
    fills[port_count] = m_adc.fill();
    m_health.look(now, static_cast<double>(m_position) / rate, fills);
}

std::size_t Host_Source::stream_of(std::size_t probe) const {
    return static_cast<std::size_t>(m_histories.probe(probe).description().port) - 1;
}

} // namespace Pelgar::ORBE::view
