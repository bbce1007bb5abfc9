// Fuzzing: words of the RHD stream through the FIFO and the frame reader, against a plain reader: frames, how
// far each one takes the reader, everything that is printed, and that reading ends after the stop signal.
//
// An input is a byte with the number of data streams, a byte with the number of frames to be read before the
// stop signal (as far as the words last), and the words.
#include "Fuzz_Target.h"

#include "Byte_Reader.h"
#include "Demux_Streams.h"
#include "Printed_Output.h"
#include "Recording_Listeners.h"
#include "Require.h"
#include "rhd/RHD_Frame_Reader.h"
#include "rhd/RHD_Word_Fifo.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

namespace {

using namespace Pelgar::ORBE::demux;
using namespace Pelgar::ORBE::test;

class Plain_Reader {
public:
    Plain_Reader(Words words, std::size_t stream_count)
        : m_words(std::move(words)), m_stream_count(stream_count) {}

    void signal_to_stop() { m_stopped = true; }

    std::size_t words_left() const { return m_words.size() - m_at; }

    // Whether the words last for another frame, or for what is taken for the preamble of one.
    bool can_read() const {
        const auto found =
            std::find(m_words.begin() + static_cast<std::ptrdiff_t>(m_at), m_words.end(), 0x2A53);
        const auto left = static_cast<std::size_t>(m_words.end() - found);
        const bool is_preamble = left >= 4 && found[1] == 0x3813 && found[2] == 0x2AAA && found[3] == 0xD7A2;
        return left >= (is_preamble ? 20 + 35 * m_stream_count + m_stream_count % 4 : 4);
    }

    // The next frame; false when there is none where it was looked for.
    bool read(Rhd_Frame_Copy& frame) {
        frame = {};
        frame.amplifier_data.resize(32);
        std::uint64_t word = next();
        if (word != 0x2A53) {
            err += "Resync warning 1\n";
            while (word != 0x2A53 && !m_stopped) {
                word = next();
            }
            out += "Resync info 1\n";
        }
        frame.preamble = word;
        frame.preamble += std::uint64_t{next()} << 16;
        frame.preamble += std::uint64_t{next()} << 32;
        frame.preamble += std::uint64_t{next()} << 48;
        if (frame.preamble != 0xD7A22AAA38132A53) {
            err += "invalid RHD frame preamble \n";
            return false;
        }
        frame.timestamp = next_double();
        for (std::size_t position = 0; position < 35; ++position) {
            for (std::size_t stream = 0; stream < m_stream_count; ++stream) {
                const std::uint16_t sample = next();
                if (stream < 32) {
                    auto& samples = frame.amplifier_data[stream];
                    samples = samples.value_or(std::array<std::uint16_t, 35>{});
                    (*samples)[position] = sample;
                }
            }
        }
        for (std::size_t i = 0; i < m_stream_count % 4 + 2; ++i) {
            next();
        }
        for (std::uint16_t& value : frame.board_adc_data) {
            value = next();
        }
        frame.ttl_in = next_double();
        frame.ttl_out = next_double();
        ++frames;
        return true;
    }

    std::string out;
    std::string err;
    std::uint32_t frames = 0;

private:
    std::uint16_t next() { return m_at < m_words.size() ? m_words[m_at++] : std::uint16_t{0}; }

    std::uint32_t next_double() {
        const std::uint32_t low = next();
        return low + 65536U * next();
    }

    Words m_words;
    std::size_t m_stream_count;
    std::size_t m_at = 0;
    bool m_stopped = false;
};

void read_and_compare(RHD_Frame_Reader& reader, Plain_Reader& reference) {
    RHD_Frame frame;
    Rhd_Frame_Copy expected;
    const bool valid = reader.read_frame(frame);
    require(valid == reference.read(expected), "whether the frame is valid");
    require(!valid || copy_of(frame) == expected, "frame");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Byte_Reader input(data, size);
    const unsigned stream_count = input.byte();
    const unsigned reads_before_stop = input.byte();
    Words words;
    while (!input.empty()) {
        words.push_back(input.word());
    }

    Printed_Output printed;
    RHD_Word_Fifo fifo;
    RHD_Frame_Reader reader(fifo);
    reader.set_enabled_stream_count(stream_count);
    Plain_Reader reference(words, stream_count);
    fifo.push_words(words);
    const std::size_t most_reads = words.size() / 4 + 1;

    std::size_t reads = 0;
    for (; reads < reads_before_stop && reference.can_read(); ++reads) {
        read_and_compare(reader, reference);
        require(fifo.size() == reference.words_left(), "words taken before the stop");
    }
    fifo.signal_to_stop();
    reference.signal_to_stop();
    do {
        read_and_compare(reader, reference);
        require(fifo.size() == reference.words_left(), "words taken after the stop");
        ++reads;
    } while (fifo.size() != 0);
    require(reads <= most_reads, "every read takes four words or the rest");
    require(reader.get_valid_frame_count() == reference.frames, "number of frames");
    require(printed.take_out() == reference.out, "standard output");
    require(printed.take_err() == reference.err, "standard error");
    return 0;
}
