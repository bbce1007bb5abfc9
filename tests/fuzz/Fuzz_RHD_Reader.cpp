// Fuzzing: words of the RHD stream through the FIFO and the frame reader, against a plain reader: frames, how
// far each one takes the reader, everything that is printed, and that reading ends after the stop signal.
//
// An input is a byte with the number of data streams, a byte with the number of frames to be read before the
// stop signal (as far as the words last), and the words. The second byte also says how long the pieces are in
// which the words are pushed.
#include "Fuzz_Target.h"

#include "Byte_Reader.h"
#include "Demux_Streams.h"
#include "Printed_Output.h"
#include "RHD_Reference_Reader.h"
#include "Recording_Listeners.h"
#include "Require.h"
#include "rhd/RHD_Frame_Reader.h"
#include "rhd/RHD_Word_Fifo.h"

#include <algorithm>
#include <span>

namespace {

using namespace Pelgar::ORBE::demux;
using namespace Pelgar::ORBE::test;

void read_and_compare(RHD_Frame_Reader& reader, RHD_Frame& frame, RHD_Reference_Reader& reference) {
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
    RHD_Frame frame; // one record for all, as the worker has it
    reader.set_enabled_stream_count(stream_count);
    RHD_Reference_Reader reference(words, stream_count);
    const std::size_t piece = 1 + std::size_t{5} * reads_before_stop;
    for (std::size_t at = 0; at < words.size(); at += piece) {
        fifo.push_words(std::span(words).subspan(at, std::min(piece, words.size() - at)));
    }
    const std::size_t most_reads = words.size() / 4 + 1;

    std::size_t reads = 0;
    for (; reads < reads_before_stop && reference.can_read(); ++reads) {
        read_and_compare(reader, frame, reference);
        require(fifo.size() == reference.words_left(), "words taken before the stop");
    }
    fifo.signal_to_stop();
    reference.signal_to_stop();
    do {
        read_and_compare(reader, frame, reference);
        require(fifo.size() == reference.words_left(), "words taken after the stop");
        ++reads;
    } while (fifo.size() != 0);
    require(reads <= most_reads, "every read takes four words or the rest");
    require(reader.get_valid_frame_count() == reference.frames, "number of frames");
    require(printed.take_out() == reference.out, "standard output");
    require(printed.take_err() == reference.err, "standard error");
    return 0;
}
