#include "rhd/RHD_Frame_Reader.h"

#include "common/Console.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <span>

namespace Pelgar::ORBE::demux {

namespace {

constexpr unsigned word_bits = 16;
constexpr auto preamble_first_word = static_cast<std::uint16_t>(rhd_frame_preamble);
constexpr unsigned preamble_words = 4;
// The amplifier data of N streams is followed by N modulo this many filler words.
constexpr std::uint32_t filler_modulus = 4;
// Two words between the amplifier data and the board ADC values carry nothing for us.
constexpr std::uint64_t unused_words = 2;

} // namespace

RHD_Frame_Reader::RHD_Frame_Reader(RHD_Word_Fifo& fifo) : m_fifo(fifo) {}

bool RHD_Frame_Reader::read_frame(RHD_Frame& frame) {
    frame.preamble = find_preamble();
    for (unsigned i = 1; i < preamble_words; ++i) {
        frame.preamble |= std::uint64_t{m_fifo.pop_word()} << (word_bits * i);
    }
    if (frame.preamble != rhd_frame_preamble) {
        console::err("invalid RHD frame preamble \n");
        return false;
    }
    frame.timestamp = read_double_word();

    const std::uint32_t stream_count = m_enabled_rhd_stream_count;
    read_amplifier_data(frame, stream_count);
    m_fifo.skip_words(stream_count % filler_modulus + unused_words);

    m_fifo.read_words(frame.board_adc_data);
    frame.ttl_in = read_double_word();
    frame.ttl_out = read_double_word();
    m_valid_frame_count.fetch_add(1);
    return true;
}

// Reads up to the first word of a preamble and returns it, or whatever word came last when the stop signal
// ended the search.
std::uint16_t RHD_Frame_Reader::find_preamble() {
    std::uint16_t word = m_fifo.pop_word();
    if (word != preamble_first_word) {
        console::err("Resync warning 1\n");
        while (word != preamble_first_word && !m_fifo.stop_signalled()) {
            word = m_fifo.pop_word();
        }
        console::out("Resync info 1\n");
    }
    return word;
}

std::uint32_t RHD_Frame_Reader::read_double_word() {
    const std::uint32_t low = m_fifo.pop_word();
    const std::uint32_t high = m_fifo.pop_word();
    return high << word_bits | low;
}

// The wire carries one word of every stream in turn; the record holds one array a stream.
void RHD_Frame_Reader::read_amplifier_data(RHD_Frame& frame, std::uint32_t stream_count) {
    const std::size_t kept = std::min<std::size_t>(stream_count, rhd_max_stream_count);
    const std::span<std::uint16_t> words = std::span(m_words).first(kept * rhd_words_per_stream);
    for (std::size_t position = 0; position < rhd_words_per_stream; ++position) {
        m_fifo.read_words(words.subspan(position * kept, kept));
        m_fifo.skip_words(stream_count - kept);
    }
    for (std::size_t stream = 0; stream < kept; ++stream) {
        frame.amplifier_data[stream] = std::make_unique<std::array<std::uint16_t, rhd_words_per_stream>>();
        auto& samples = *frame.amplifier_data[stream];
        for (std::size_t position = 0; position < rhd_words_per_stream; ++position) {
            samples[position] = words[position * kept + stream];
        }
    }
}

} // namespace Pelgar::ORBE::demux
