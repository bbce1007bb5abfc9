// Fuzzing: the whole demultiplexer, fed transfer buffers of any size, against the plain reference: rows
// counted and reported, channel sets of every port, RHD frames.
//
// An input begins with a byte: in its low bits the number of RHD streams (modulo 33), in its uppermost bit
// whether the workers run. Steps follow that put transfer buffers together (see `Step`); a buffer that is
// full ends by itself.
#include "Fuzz_Target.h"

#include "Anomaly_Lines.h"
#include "Byte_Reader.h"
#include "Demux_Streams.h"
#include "Log_Capture.h"
#include "Mux_Reference.h"
#include "Printed_Output.h"
#include "Recording_Listeners.h"
#include "Require.h"
#include "rows/C_Async_PSB_And_RHD_Demux.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace Pelgar::ORBE::demux;
using namespace Pelgar::ORBE::test;

constexpr unsigned workers_run = 0x80;
constexpr unsigned stream_count_mask = 0x7F;
// Each buffer takes 1 MiB, and each whole block a good part of a second under the sanitizers.
constexpr std::size_t most_buffers = 12;
constexpr unsigned most_whole_blocks = 2;

// What follows a step's byte stands beside it. Bytes beyond the steps count by their remainder, but that only
// the byte itself makes a whole block: they take long, and few inputs need one.
enum Step : unsigned {
    raw,         // word n, n bytes: these bytes
    row,         // byte id, 14 bytes: a row of the stream, whose counter runs on
    super_frame, // byte port: the port's next super frame, as 65 rows
    whole_block, // byte port: the port's next 1,792 super frames
    rhd_frame,   // the next RHD frame, as rows
    end_buffer,
    skip_rows,   // byte id, byte n: the stream's row counter goes on by n
    change_byte, // word n, byte x: byte n of the buffer (modulo its length) is XORed with x
    cut,         // byte n: the buffer loses the last n (modulo 32) bytes
    turns,       // byte m: the next super frames of the ports whose bits are set in m, row by row in turn
    step_count,
};

class Buffer_Maker {
public:
    Buffer_Maker(Byte_Reader input, std::size_t rhd_stream_count)
        : m_input(input), m_rhd_stream_count(rhd_stream_count) {}

    std::vector<Bytes> make() {
        while (!m_input.empty() && m_buffers.size() < most_buffers) {
            take_step();
        }
        end();
        return std::move(m_buffers);
    }

private:
    void take_step() {
        const unsigned byte = m_input.byte();
        const bool is_step = byte < step_count || byte % step_count != whole_block;
        switch (is_step ? byte % step_count : super_frame) {
        case raw:
            append(m_input.bytes(m_input.word()));
            break;
        case row: {
            const unsigned id = m_input.byte() % 16U;
            Row_Payload payload;
            std::generate(payload.begin(), payload.end(), [this] { return m_input.word(); });
            append_row(id, payload);
            break;
        }
        case super_frame:
            append_super_frames(m_input.byte() % 4U, 1);
            break;
        case whole_block: {
            const unsigned port = m_input.byte() % 4U;
            if (m_whole_blocks++ < most_whole_blocks) {
                append_super_frames(port, 1792);
            }
            break;
        }
        case rhd_frame:
            append_rhd_frame();
            break;
        case end_buffer:
            end();
            break;
        case skip_rows: {
            const unsigned id = m_input.byte() % 16U;
            m_counters.skip(id, m_input.byte());
            break;
        }
        case change_byte: {
            const std::size_t at = m_input.word();
            const std::uint8_t change = m_input.byte();
            if (!m_buffer.empty()) {
                m_buffer[at % m_buffer.size()] ^= change;
            }
            break;
        }
        case turns:
            append_turns(m_input.byte());
            break;
        default: {
            const auto count = std::min<std::ptrdiff_t>(m_input.byte() % 32, std::ssize(m_buffer));
            m_buffer.erase(m_buffer.end() - count, m_buffer.end());
        }
        }
    }

    void append(std::span<const std::uint8_t> bytes) {
        if (m_buffer.size() + bytes.size() > transfer_buffer_capacity) {
            end();
        }
        m_buffer.insert(m_buffer.end(), bytes.begin(), bytes.end());
    }

    void append_row(unsigned id, const Row_Payload& payload) {
        Bytes bytes;
        m_counters.append(bytes, id, payload);
        append(bytes);
    }

    void append_super_frames(unsigned port, std::size_t count) {
        for (const Row_Payload& payload : row_payloads(numbered_super_frames(m_next_frame[port], count))) {
            append_row(port, payload);
        }
        m_next_frame[port] += static_cast<std::uint32_t>(13 * count);
    }

    void append_turns(unsigned ports) {
        std::array<std::vector<Row_Payload>, 4> rows;
        for (unsigned port = 0; port < 4; ++port) {
            if ((ports >> port & 1U) != 0) {
                rows[port] = row_payloads(numbered_super_frames(m_next_frame[port], 1));
                m_next_frame[port] += 13;
            }
        }
        for (std::size_t row = 0; row < 65; ++row) {
            for (unsigned port = 0; port < 4; ++port) {
                if (!rows[port].empty()) {
                    append_row(port, rows[port][row]);
                }
            }
        }
    }

    // What does not fill a row waits for the next frame.
    void append_rhd_frame() {
        const Words frame =
            rhd_words(numbered_rhd_frame(m_next_rhd_frame++, m_rhd_stream_count), m_rhd_stream_count);
        m_rhd_words.insert(m_rhd_words.end(), frame.begin(), frame.end());
        const std::size_t used = m_rhd_words.size() / 7 * 7;
        for (const Row_Payload& payload : row_payloads(std::span(m_rhd_words).first(used))) {
            append_row(4, payload);
        }
        m_rhd_words.erase(m_rhd_words.begin(), m_rhd_words.begin() + static_cast<std::ptrdiff_t>(used));
    }

    void end() {
        if (!m_buffer.empty()) {
            m_buffers.push_back(std::move(m_buffer));
            m_buffer.clear();
        }
    }

    Byte_Reader m_input;
    std::size_t m_rhd_stream_count;
    std::vector<Bytes> m_buffers;
    Bytes m_buffer;
    Row_Counters m_counters;
    std::array<std::uint32_t, 4> m_next_frame{};
    std::uint32_t m_next_rhd_frame = 0;
    Words m_rhd_words;
    unsigned m_whole_blocks = 0;
};

// Runs the demultiplexer on this thread until it has been through everything that is queued, which a last
// buffer of one byte tells. Answers how many buffers before that one were too short.
std::size_t run_to_the_end_of_the_queue(Async_NP_And_RHD_Demux& demux, std::size_t short_buffers) {
    push_bytes(demux, Bytes(1));
    for (std::size_t thrown = 0;; ++thrown) {
        try {
            demux.run();
            require(false, "the demultiplexer goes on until it is poisoned");
        } catch (const std::runtime_error& error) {
            require(error.what() == std::string("Buffer must contain at least 16 byte"),
                    "text of the exception");
            demux.drop_front_xfer_buffer();
        }
        if (thrown == short_buffers) {
            return thrown;
        }
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Byte_Reader input(data, size);
    const unsigned options = input.byte();
    const bool with_workers = (options & workers_run) != 0;
    const std::size_t rhd_stream_count = (options & stream_count_mask) % 33;
    const std::vector<Bytes> buffers = Buffer_Maker(input, rhd_stream_count).make();

    Mux_Reference reference(rhd_stream_count);
    std::size_t short_buffers = 0;
    for (const Bytes& buffer : buffers) {
        if (buffer.size() < 16) {
            ++short_buffers;
        } else {
            reference.feed_transfer_buffer(buffer);
        }
    }
    const std::vector<Rhd_Frame_Copy> expected_rhd_frames = reference.rhd_frames();

    Printed_Output printed;
    const Log_Capture log;
    std::array<std::shared_ptr<Recording_L2_Listener>, 4> listeners;
    const auto rhd_listener = std::make_shared<Recording_Rhd_Listener>();
    {
        Async_NP_And_RHD_Demux demux;
        for (unsigned port = 0; port < 4; ++port) {
            listeners[port] = std::make_shared<Recording_L2_Listener>();
            demux.set_L2_CH_Results_Listener(listeners[port], port);
        }
        demux.set_RHD_Results_Listener(rhd_listener);
        demux.set_enabled_RHD_stream_count(static_cast<unsigned>(rhd_stream_count));
        if (with_workers) {
            demux.start_worker_threads();
        }
        for (const Bytes& buffer : buffers) {
            push_bytes(demux, buffer);
        }
        run_to_the_end_of_the_queue(demux, short_buffers);
        if (with_workers) {
            // The stop drops frames that are still queued.
            rhd_listener->wait_for_frames(expected_rhd_frames.size());
        }
        require(!demux.is_done(), "the demultiplexer is not done before the poison");
        demux.poison_queue();
        demux.run();
        require(demux.is_done(), "the demultiplexer is done after the poison");
        require(demux.get_total_processed_SF_count() == 0, "blocks count no sync patterns");
        require(demux.get_total_processed_RHD_frame_count() == rhd_listener->frames().size(),
                "RHD frame count");
    }

    const std::string out = printed.take_out();
    const std::string err = printed.take_err();
    require(lines_of(out, row_beginnings) == lines_of(reference.row_lines, row_beginnings),
            "lines about rows");
    require(lines_of(err, {"Buffer size incompatible"}).size() ==
                static_cast<std::size_t>(reference.incompatible_sizes),
            "buffers of odd sizes");
    Lines unknown_ids;
    for (const std::string& text : log.texts()) {
        if (text.starts_with("Unknown demux")) {
            unknown_ids.push_back(text);
        }
    }
    require(unknown_ids == reference.unknown_ids, "unknown streams");
    for (unsigned port = 0; port < 4; ++port) {
        require(log.count("Number of np " + std::to_string(port) +
                          " rows processed : " + std::to_string(reference.port_rows[port])) == 1,
                "rows of a port");
    }
    require(log.count("Number of rhd rows processed : " + std::to_string(reference.rhd_rows)) == 1,
            "RHD rows");
    if (!with_workers) {
        return 0;
    }

    std::string expected_out;
    std::string expected_err;
    for (unsigned port = 0; port < 4; ++port) {
        require(listeners[port]->sets == reference.ports[port].sets, "channel sets");
        expected_out += reference.ports[port].out;
        expected_err += reference.ports[port].err;
    }
    require(sorted(lines_of(out, port_beginnings)) == sorted(lines_of(expected_out, port_beginnings)),
            "ports on standard output");
    require(sorted(lines_of(err, port_beginnings)) == sorted(lines_of(expected_err, port_beginnings)),
            "ports on standard error");

    // A frame that has begun when the stop comes may be filled up with zeros.
    std::vector<Rhd_Frame_Copy> rhd_frames = rhd_listener->frames();
    require(rhd_frames.size() >= expected_rhd_frames.size() &&
                rhd_frames.size() <= expected_rhd_frames.size() + 1,
            "number of RHD frames");
    rhd_frames.resize(expected_rhd_frames.size());
    require(rhd_frames == expected_rhd_frames, "RHD frames");
    return 0;
}
