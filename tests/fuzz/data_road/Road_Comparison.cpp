#include "Road_Comparison.h"

#include "Require.h"

#include <loguru.hpp>

#include <algorithm>
#include <cstring>
#include <deque>

namespace Pelgar::ORBE::test {

namespace {

using road_model::port_count;

constexpr unsigned rhd_stream = 4;
constexpr unsigned everybody = 0x1F;
constexpr const char* log_name = "data-road";

// The library's counters of the whole process, and numbers for the times of streaming, of which no two are
// the same.
road_model::Process_Counters g_process;
std::uint32_t g_streaming = 0;

void differ(const std::string& what) {
    require(false, what.c_str());
}

template <typename Expected, typename Received>
void compare(const char* what, std::size_t where, const Expected& expected, const Received& received) {
    if (expected != received) {
        differ(std::string(what) + " of " + std::to_string(where) + ": the model has " +
               std::to_string(expected) + ", the library " + std::to_string(received));
    }
}

// The first line in which they differ.
void compare_text(const char* what, const std::string& expected, const std::string& received) {
    if (expected == received) {
        return;
    }
    const auto begin =
        std::mismatch(expected.begin(), expected.end(), received.begin(), received.end()).first;
    const auto place = static_cast<std::size_t>(begin - expected.begin());
    const auto line_before = place == 0 ? std::string::npos : expected.rfind('\n', place - 1);
    const std::size_t at = line_before == std::string::npos ? 0 : line_before + 1;
    const auto line = [at](const std::string& text) {
        return at < text.size() ? text.substr(at, text.find('\n', at) - at) : std::string("(end)");
    };
    differ(std::string(what) + ": the model has '" + line(expected) + "', the library '" + line(received) +
           "'");
}

// Scopes, and what is told once a second, depend on the time.
bool is_of_time(std::string_view line) {
    return line.find(" lost so far") != std::string_view::npos ||
           line.find(" dropped so far") != std::string_view::npos;
}

void compare_packet(const std::string& name, const road_model::Probe_Packet& expected,
                    const Neuropixels::electrodePacket& received) {
    for (std::size_t row = 0; row < road_model::packet_rows; ++row) {
        compare((name + "stamp").c_str(), row, expected.stamps[row], received.timestamp[row]);
        compare((name + "status").c_str(), row, expected.status[row], received.Status[row]);
        if (std::memcmp(expected.ap[row].data(), received.apData[row], sizeof received.apData[row]) != 0) {
            for (std::size_t channel = 0; channel < road_model::channel_count; ++channel) {
                compare((name + "AP sample " + std::to_string(row) + ", channel").c_str(), channel,
                        expected.ap[row][channel], received.apData[row][channel]);
            }
        }
    }
    for (std::size_t channel = 0; channel < road_model::channel_count; ++channel) {
        compare((name + "LFP, channel").c_str(), channel, expected.lfp[channel], received.lfpData[channel]);
    }
}

} // namespace

Road_Comparison::Log::Log() {
    loguru::add_callback(
        log_name,
        [](void* log, const loguru::Message& message) {
            const std::string_view text = message.message;
            const bool is_scope = *message.prefix != '\0' || text.starts_with("{ ") || text.starts_with("} ");
            if (!is_scope && !is_of_time(text)) {
                static_cast<Log*>(log)->lines.push_back(std::to_string(message.verbosity) + " " +
                                                        message.message);
            }
        },
        this, loguru::Verbosity_INFO);
}

Road_Comparison::Log::~Log() {
    loguru::remove_callback(log_name);
}

Road_Comparison::Road_Comparison(const road_model::Road_Settings& settings)
    : m_is_host_mode(settings.host_mode), m_streaming(++g_streaming),
      m_model(settings, g_process, m_streaming), m_library(settings, m_streaming) {}

Road_Comparison::~Road_Comparison() {
    m_library.end_run();
}

void Road_Comparison::take(const Road_Event& event) {
    switch (event.happening) {
    case Happening::transfer:
        m_model.push(event.bytes);
        m_library.push(event.bytes);
        break;
    case Happening::work:
        work(event.number);
        break;
    case Happening::resync:
        m_model.resync();
        m_library.resync();
        break;
    case Happening::forget:
        // As it comes behind the end of a run: everything has reached the host that can.
        work(everybody);
        if (m_library.forget()) {
            m_model.forget();
        }
        break;
    case Happening::gains:
        m_model.set_gains(event.number);
        m_library.set_gains(event.number);
        break;
    case Happening::read:
        for (unsigned port = 0; port < port_count; ++port) {
            compare_packets(port);
        }
        compare_adc_packets();
        break;
    case Happening::restart:
        if (m_is_host_mode) {
            m_streaming = ++g_streaming;
            m_model.end_run();
            m_library.end_run();
            m_model.begin_streaming(m_streaming);
            m_library.begin_streaming(m_streaming);
            m_model.begin_run();
            m_library.begin_run();
        }
        break;
    case Happening::pause:
        if (m_is_host_mode && event.number % 2 == 0) {
            m_model.end_run();
            m_library.end_run();
        } else if (m_is_host_mode) {
            m_model.begin_run();
            m_library.begin_run();
        }
        break;
    }
}

void Road_Comparison::work(unsigned who) {
    m_model.work_on_transfers();
    m_library.work_on_transfers();
    for (unsigned port = 0; port < port_count; ++port) {
        if ((who >> port & 1U) != 0) {
            m_model.work_on_port(port);
            m_library.work_on_port(port);
        }
    }
    if ((who >> rhd_stream & 1U) != 0) {
        m_model.work_on_rhd();
        m_library.work_on_rhd(m_model.unread_rhd_words());
    }
}

void Road_Comparison::compare_packets(unsigned port) {
    const auto expected = m_model.take_packets(port);
    const auto received = m_library.take_packets(port);
    const std::string name = "port " + std::to_string(port) + ", packet ";
    for (std::size_t i = 0; i < std::min(expected.size(), received.size()); ++i) {
        compare_packet(name + std::to_string(i) + ", ", expected[i], received[i]);
    }
    compare("packets", port, expected.size(), received.size());
}

void Road_Comparison::compare_adc_packets() {
    const auto expected = m_model.take_adc_packets();
    const auto received = m_library.take_adc_packets();
    for (std::size_t i = 0; i < std::min(expected.size(), received.size()); ++i) {
        compare("stamp of ADC packet", i, expected[i].stamp, received[i].info.Timestamp);
        compare("status of ADC packet", i, expected[i].status, received[i].info.Status);
        compare("length of ADC packet", i, expected[i].payload, received[i].info.payloadlength);
        for (std::size_t column = 0; column < received[i].row.size(); ++column) {
            compare("ADC column", column, expected[i].row[column], received[i].row[column]);
        }
    }
    compare("number of ADC packets of way", m_is_host_mode ? 1 : 0, expected.size(), received.size());
}

void Road_Comparison::compare_the_rest() {
    compare_told();
    compare_counts();
}

void Road_Comparison::compare_told() {
    compare_text("standard output", m_model.told().out, m_printed.take_out());
    compare_text("standard error", m_model.told().err, m_printed.take_err());
    std::string expected;
    std::string received;
    for (const std::string& line : m_model.told().log) {
        expected += line + "\n";
    }
    for (const std::string& line : m_log.lines) {
        received += line + "\n";
    }
    compare_text("log", expected, received);
}

void Road_Comparison::compare_counts() const {
    const demux::Async_NP_And_RHD_Demux& demux = m_library.demux();
    compare("RHD frames", rhd_stream, m_model.rhd_frames(), demux.get_total_processed_RHD_frame_count());
    compare("lost bytes", 0, m_model.lost_bytes(), demux.get_lost_byte_count());
    compare("lost RHD words", rhd_stream, std::uint64_t{0}, demux.get_lost_RHD_word_count());
    for (unsigned port = 0; port < port_count; ++port) {
        compare("lost super frames", port, m_model.lost_super_frames(port),
                demux.get_lost_super_frame_count(port));
    }
    for (unsigned stream = 0; stream <= rhd_stream; ++stream) {
        const road_model::Damage expected = m_model.damage(stream);
        const demux::Stream_Damage received = demux.get_stream_damage(stream);
        compare("row gaps", stream, expected.row_gaps, received.row_gaps);
        compare("frame gaps", stream, expected.frame_gaps, received.frame_gaps);
        compare("wrong tags", stream, expected.wrong_tags, received.wrong_tags);
    }
}

} // namespace Pelgar::ORBE::test
