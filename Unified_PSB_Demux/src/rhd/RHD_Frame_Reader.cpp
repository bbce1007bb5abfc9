#include "rhd/RHD_Frame_Reader.h"

#include "common/Console.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>

namespace Pelgar::ORBE::demux {

namespace {

constexpr unsigned word_bits = 16;
constexpr auto preamble_first_word = static_cast<std::uint16_t>(rhd_frame_preamble);
constexpr std::size_t preamble_words = 4;
constexpr std::size_t double_words = 2;
// The amplifier data of N streams is followed by N modulo this many filler words.
constexpr std::uint32_t filler_modulus = 4;
// Two words between the amplifier data and the board ADC values carry nothing for us.
constexpr std::uint64_t unused_words = 2;

// Words behind the amplifier data that belong to nothing.
constexpr std::uint64_t words_to_skip(std::uint32_t stream_count) {
    return stream_count % filler_modulus + unused_words;
}

constexpr std::size_t frame_words(std::uint32_t stream_count) {
    return preamble_words + double_words + rhd_words_per_stream * stream_count +
           static_cast<std::size_t>(words_to_skip(stream_count)) + rhd_board_adc_count + 2 * double_words;
}

// Copies words as they lie and goes on behind them.
template <typename T>
void take(const std::uint16_t*& words, T& destination) {
    std::memcpy(&destination, words, sizeof destination);
    words += sizeof destination / sizeof *words;
}

// The record's arrays are kept from frame to frame; there are as many as there are streams.
std::span<RHD_Stream_Words* const> arrays_of(RHD_Frame& frame, std::size_t stream_count,
                                             std::array<RHD_Stream_Words*, rhd_max_stream_count>& arrays) {
    for (std::size_t stream = 0; stream < rhd_max_stream_count; ++stream) {
        auto& array = frame.amplifier_data[stream];
        if (stream >= stream_count) {
            array.reset();
        } else if (!array) {
            array = std::make_unique<RHD_Stream_Words>();
        }
        arrays[stream] = array.get();
    }
    return std::span(arrays).first(stream_count);
}

} // namespace

RHD_Frame_Reader::RHD_Frame_Reader(RHD_Word_Fifo& fifo) : m_fifo(fifo) {}

bool RHD_Frame_Reader::read_frame(RHD_Frame& frame) {
    return read_frame_in_place(frame) || read_frame_word_by_word(frame);
}

// The straight road: a frame that begins where the last one ended and lies in one piece. Answers false, and
// has read nothing, when it is anything else.
bool RHD_Frame_Reader::read_frame_in_place(RHD_Frame& frame) {
    const std::span<const std::uint16_t> words = m_fifo.wait_words();
    const std::uint32_t stream_count = m_enabled_rhd_stream_count;
    if (stream_count > rhd_max_stream_count || words.size() < frame_words(stream_count)) {
        return false;
    }
    const std::uint16_t* at = words.data();
    std::uint64_t preamble = 0;
    take(at, preamble);
    if (preamble != rhd_frame_preamble) {
        return false;
    }
    frame.preamble = preamble;
    take(at, frame.timestamp);
    std::array<RHD_Stream_Words*, rhd_max_stream_count> arrays;
    turn_rhd_words(at, arrays_of(frame, stream_count, arrays));
    at += rhd_words_per_stream * stream_count + words_to_skip(stream_count);
    take(at, frame.board_adc_data);
    take(at, frame.ttl_in);
    take(at, frame.ttl_out);
    m_fifo.skip_words(frame_words(stream_count));
    m_valid_frame_count.fetch_add(1);
    return true;
}

// Every other road: words that are no frame, and frames that go on in a piece that may still have to come.
bool RHD_Frame_Reader::read_frame_word_by_word(RHD_Frame& frame) {
    // What is wrong is printed.
    m_fifo.tell_of_wait();
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
    m_fifo.skip_words(words_to_skip(stream_count));

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

void RHD_Frame_Reader::read_amplifier_data(RHD_Frame& frame, std::uint32_t stream_count) {
    const std::size_t kept = std::min<std::size_t>(stream_count, rhd_max_stream_count);
    const std::span<std::uint16_t> words = std::span(m_words).first(kept * rhd_words_per_stream);
    for (std::size_t position = 0; position < rhd_words_per_stream; ++position) {
        m_fifo.read_words(words.subspan(position * kept, kept));
        m_fifo.skip_words(stream_count - kept);
    }
    std::array<RHD_Stream_Words*, rhd_max_stream_count> arrays;
    turn_rhd_words(words.data(), arrays_of(frame, kept, arrays));
}

} // namespace Pelgar::ORBE::demux
