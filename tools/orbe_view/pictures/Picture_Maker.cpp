#include "pictures/Picture_Maker.h"

#include "probe_geometry/Probe_Geometry.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <tuple>

namespace Pelgar::ORBE::view {

namespace {

using nlohmann::json;

constexpr double rate = recorder::ap_sample_rate;
constexpr std::size_t ap_samples_of_lfp = recorder::ap_sample_rate / recorder::lfp_sample_rate;
constexpr std::size_t damage_stretches = 1000;

// So many rows, or bins of them, are looked at before a stream that waits gets its turn: a tenth of a
// millisecond or two.
constexpr std::uint64_t rows_at_once = 1024;

std::size_t columns_at_once(const Columns& columns, std::uint64_t rows_per_bin) {
    const std::uint64_t rows = columns.step < rows_per_bin ? columns.step : columns.step / rows_per_bin;
    return static_cast<std::size_t>(std::max<std::uint64_t>(rows_at_once / rows, 1));
}

// What is no number becomes null.
json health_json(const Health& health) {
    json streams = json::array();
    for (const Stream_Health& stream : health.streams) {
        streams.push_back({stream.rate, stream.row_gaps, stream.frame_gaps, stream.wrong_tags,
                           stream.lost_samples, stream.queue_fill, stream.link_lock});
    }
    return {{"seconds", health.seconds}, {"streams", streams}};
}

// So that a page knows which of its wishes it sees.
json end_json(const View_Request& request) {
    return request.end ? json(*request.end) : json();
}

// Of a channel that is not in the recording, no number: its values are none either.
float scale_or_none(const Probe_History& probe, Band band, std::size_t channel) {
    return probe.has(channel) ? probe.scale(band, channel) : std::nanf("");
}

json probe_json(const Probe_History& history) {
    const recorder::Probe_Description& probe = history.description();
    const auto geometry = recorder::geometry_of(probe.part_number);
    json channels = json::array();
    for (std::size_t channel = 0; channel < probe.channels.size(); ++channel) {
        const auto position = recorder::position_of(geometry, recorder::electrode_or_bank_0(probe, channel));
        channels.push_back({position.x, position.y, probe.channels[channel].electrode,
                            history.scale(Band::ap, channel), history.scale(Band::lfp, channel)});
    }
    return {{"port", probe.port},
            {"serial", probe.serial_number},
            {"part", probe.part_number},
            {"channels", channels}};
}

} // namespace

// Collects the numbers of a picture and what JSON says about them.
class Picture_Maker::Blocks {
public:
    json& head() { return m_head; }

    void add(const char* name, std::size_t rows, std::span<const float> values) {
        m_blocks.push_back({{"name", name},
                            {"offset", m_values.size()},
                            {"rows", rows},
                            {"columns", rows == 0 ? 0 : values.size() / rows}});
        m_values.insert(m_values.end(), values.begin(), values.end());
    }

    Picture picture() {
        m_head["blocks"] = m_blocks;
        // Names of files can be of any bytes.
        std::string head = m_head.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
        head.resize((head.size() + 3) / 4 * 4, ' '); // floats begin at multiples of their size
        const auto length = static_cast<std::uint32_t>(head.size());
        const std::size_t value_bytes = m_values.size() * sizeof(float);
        Picture picture(sizeof(length) + head.size() + value_bytes);
        std::memcpy(picture.data(), &length, sizeof(length));
        std::memcpy(picture.data() + sizeof(length), head.data(), head.size());
        if (value_bytes != 0) {
            std::memcpy(picture.data() + sizeof(length) + head.size(), m_values.data(), value_bytes);
        }
        return picture;
    }

private:
    json m_head = json::object();
    json m_blocks = json::array();
    std::vector<float> m_values;
};

Picture_Maker::Picture_Maker(const A_Source& source, bool may_control)
    : m_source(source), m_may_control(may_control) {}

Picture Picture_Maker::introduction() const {
    Blocks blocks;
    json probes = json::array();
    const Histories& histories = m_source.histories();
    for (std::size_t probe = 0; probe < histories.probe_count(); ++probe) {
        probes.push_back(probe_json(histories.probe(probe)));
    }
    const Source_Status status = m_source.status();
    blocks.head()["introduction"] = {{"name", status.name},
                                     {"kind", status.kind},
                                     {"can_jump", status.can_jump},
                                     {"may_control", m_may_control},
                                     {"has_adc", histories.adc() != nullptr},
                                     {"probes", probes}};
    return blocks.picture();
}

Picture Picture_Maker::make(const View_Request& request, std::uint64_t number, bool is_whole) {
    Blocks blocks;
    const Source_Status status = m_source.status();
    json& head = blocks.head();
    head["number"] = number;
    head["status"] = {{"position", static_cast<double>(status.position) / rate},
                      {"length", status.length},
                      {"known", status.known_part},
                      {"plays", status.is_playing},
                      {"streams", status.is_streaming},
                      {"problem", status.problem}};
    const std::uint64_t end = end_of(request, status);
    add_traces(blocks, request, end);
    if (is_whole) {
        if (const Probe_History* const probe = m_source.histories().probe_on(request.port)) {
            add_channels(blocks, *probe);
            add_spectrum(blocks, *probe, request, end);
        }
        add_health(blocks);
        add_damage(blocks);
    }
    return blocks.picture();
}

std::uint64_t Picture_Maker::end_of(const View_Request& request, const Source_Status& status) const {
    return request.end ? static_cast<std::uint64_t>(*request.end * rate + 0.5) : status.position;
}

void Picture_Maker::add_traces(Blocks& blocks, const View_Request& request, std::uint64_t end) {
    const Histories& histories = m_source.histories();
    if (request.stream == Shown_Stream::adc) {
        if (histories.adc() != nullptr) {
            add_adc_traces(blocks, *histories.adc(), request, end);
        }
    } else if (const Probe_History* const probe = histories.probe_on(request.port)) {
        add_probe_traces(blocks, *probe, request, end);
    }
}

void Picture_Maker::add_probe_traces(Blocks& blocks, const Probe_History& probe, const View_Request& request,
                                     std::uint64_t end) {
    const Band band = request.stream == Shown_Stream::lfp ? Band::lfp : Band::ap;
    const std::uint64_t samples = band == Band::ap ? 1 : ap_samples_of_lfp; // of 30 kHz
    std::vector<float> scales;
    for (std::size_t channel = 0; channel < request.channel_count; ++channel) {
        scales.push_back(scale_or_none(probe, band, request.first_channel + channel));
    }
    const auto [rows_per_bin, remembered, lost_samples] = [&] {
        const Probe_History::Reading reading(probe);
        const Stream_History& stream = reading.band(band);
        return std::tuple(stream.rows_per_bin(), stream.begin(), reading.lost_samples());
    }();
    const auto length = static_cast<std::uint64_t>(request.seconds * rate) / samples;
    const Columns columns = Columns::ending_at(end / samples, length, request.columns, rows_per_bin);
    const double seconds = static_cast<double>(samples) / rate;
    blocks.head()["traces"] = {{"stream", band == Band::ap ? "ap" : "lfp"},
                               {"port", request.port},
                               {"first", request.first_channel},
                               {"begin", static_cast<double>(columns.begin) * seconds},
                               {"step", static_cast<double>(columns.step) * seconds},
                               {"seconds", request.seconds},
                               {"end", end_json(request)},
                               {"remembered", static_cast<double>(remembered) * seconds},
                               {"lost", lost_samples}};
    add_lanes(blocks, columns, columns_at_once(columns, rows_per_bin), scales,
              [&](const Columns& part, std::span<Extent> extents, std::span<std::uint32_t> lost) {
                  const Probe_History::Reading reading(probe);
                  reading.band(band).extents(part, request.first_channel, scales.size(), extents);
                  reading.band(band).lost(part, lost);
              });
}

void Picture_Maker::add_adc_traces(Blocks& blocks, const ADC_History& adc, const View_Request& request,
                                   std::uint64_t end) {
    std::vector<float> scales(ADC_History::width, 1.0F);
    std::fill_n(scales.begin(), ADC_History::analog_inputs, adc.scale());
    const auto [rows_per_bin, remembered, lost_samples] = [&] {
        const ADC_History::Reading reading(adc);
        const Stream_History& stream = reading.stream();
        return std::tuple(stream.rows_per_bin(), stream.begin(), reading.lost_samples());
    }();
    const auto length = static_cast<std::uint64_t>(request.seconds * rate);
    const Columns columns = Columns::ending_at(end, length, request.columns, rows_per_bin);
    blocks.head()["traces"] = {{"stream", "adc"},
                               {"port", 0},
                               {"first", 0},
                               {"begin", static_cast<double>(columns.begin) / rate},
                               {"step", static_cast<double>(columns.step) / rate},
                               {"seconds", request.seconds},
                               {"end", end_json(request)},
                               {"remembered", static_cast<double>(remembered) / rate},
                               {"lost", lost_samples}};
    add_lanes(blocks, columns, columns_at_once(columns, rows_per_bin), scales,
              [&](const Columns& part, std::span<Extent> extents, std::span<std::uint32_t> lost) {
                  const ADC_History::Reading reading(adc);
                  reading.stream().extents(part, 0, scales.size(), extents);
                  reading.stream().lost(part, lost);
              });
}

// Of each lane the lowest and the highest of each column, one behind the other; what is not there is no
// number.
void Picture_Maker::add_lanes(Blocks& blocks, const Columns& columns, std::size_t columns_at_once,
                              std::span<const float> scales, const Look& look) {
    const std::size_t lanes = scales.size();
    m_values.resize(lanes * columns.count * 2);
    m_lost.resize(columns.count);
    for (std::size_t first = 0; first < columns.count; first += columns_at_once) {
        const std::size_t count = std::min(columns.count - first, columns_at_once);
        m_extents.resize(count * lanes);
        look(columns.part(first, count), m_extents, std::span(m_lost).subspan(first, count));
        for (std::size_t lane = 0; lane < lanes; ++lane) {
            float* value = m_values.data() + (lane * columns.count + first) * 2;
            for (std::size_t column = 0; column < count; ++column) {
                const Extent& extent = m_extents[column * lanes + lane];
                const bool is_there = !extent.is_empty();
                *value++ = is_there ? static_cast<float>(extent.low) * scales[lane] : std::nanf("");
                *value++ = is_there ? static_cast<float>(extent.high) * scales[lane] : std::nanf("");
            }
        }
    }
    blocks.add("traces", lanes, m_values);
    m_values.assign(m_lost.begin(), m_lost.end());
    blocks.add("lost", 1, m_values);
}

void Picture_Maker::add_channels(Blocks& blocks, const Probe_History& probe) const {
    const Probe_History::Reading reading(probe);
    std::vector<float> rms(recorder::channel_count);
    std::vector<float> spikes(recorder::channel_count);
    for (std::size_t channel = 0; channel < rms.size(); ++channel) {
        const float scale = scale_or_none(probe, Band::ap, channel);
        rms[channel] = reading.statistics().rms()[channel] * scale;
        spikes[channel] = std::isnan(scale) ? scale : reading.statistics().spikes()[channel];
    }
    blocks.head()["channels"] = {{"port", probe.description().port}};
    blocks.add("rms", 1, rms);
    blocks.add("spikes", 1, spikes);
}

void Picture_Maker::add_spectrum(Blocks& blocks, const Probe_History& probe, const View_Request& request,
                                 std::uint64_t end) {
    const bool is_lfp = request.stream == Shown_Stream::lfp;
    const Band band = is_lfp ? Band::lfp : Band::ap;
    const Power_Spectrum& spectrum = is_lfp ? m_lfp_spectrum : m_ap_spectrum;
    const double band_rate = is_lfp ? recorder::lfp_sample_rate : recorder::ap_sample_rate;
    m_samples.resize(spectrum.most_samples());
    std::size_t count = 0;
    if (probe.has(request.selected)) {
        const Probe_History::Reading reading(probe);
        count =
            reading.band(band).latest(request.selected, is_lfp ? end / ap_samples_of_lfp : end, m_samples);
    }
    const auto density = spectrum.of(std::span(m_samples).first(count),
                                     static_cast<double>(probe.scale(band, request.selected)), band_rate);
    blocks.head()["spectrum"] = {{"port", request.port},
                                 {"stream", is_lfp ? "lfp" : "ap"},
                                 {"channel", request.selected},
                                 {"end", end_json(request)},
                                 {"step", band_rate / static_cast<double>(spectrum.length())}};
    blocks.add("spectrum", 1, density);
}

void Picture_Maker::add_health(Blocks& blocks) const {
    json lines = json::array();
    const Health_Report report = m_source.histories().health().report();
    for (const Health& health : report.lines) {
        lines.push_back(health_json(health));
    }
    json sums = json::array();
    for (const Stream_Sums& sum : report.sums) {
        sums.push_back({sum.row_gaps, sum.frame_gaps, sum.wrong_tags, sum.lost_samples, sum.has_come});
    }
    blocks.head()["health"] = std::move(lines);
    blocks.head()["health_sums"] = std::move(sums);
}

void Picture_Maker::add_damage(Blocks& blocks) const {
    json marks = json::array();
    const auto damage = m_source.damage(damage_stretches);
    for (std::size_t stretch = 0; stretch < damage.size(); ++stretch) {
        const Damage_Counts& counts = damage[stretch];
        if (counts.all() != 0) {
            marks.push_back({static_cast<double>(stretch) / static_cast<double>(damage.size()),
                             counts.row_gaps, counts.frame_gaps, counts.wrong_tags, counts.others,
                             counts.lost});
        }
    }
    blocks.head()["damage"] = std::move(marks);
}

} // namespace Pelgar::ORBE::view
