// Fuzzing: a probe's serial bus word by word through the frame demuxer, against the plain decoder: frames,
// counts and everything that is printed.
//
// An input begins with a byte: in its low three bits the number of times that the sync is given up, in its
// uppermost bit whether the demuxer knows the source of the words. For each time a word follows, the number
// of words fed before; all the rest are the words.
#include "Fuzz_Target.h"

#include "Byte_Reader.h"
#include "Printed_Output.h"
#include "Recording_Listeners.h"
#include "Require.h"
#include "Word_Serial_Reference.h"
#include "probe/NP_PSB_Raw_Data_Demuxer.h"

#include <algorithm>
#include <sstream>
#include <vector>

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace Pelgar::ORBE::demux;
    using namespace Pelgar::ORBE::test;

    constexpr unsigned reset_count_mask = 0x07;
    constexpr unsigned has_source = 0x80;
    constexpr std::int64_t position = 12;

    Printed_Output printed;
    Recording_L1_Stage stage;
    NP_PSB_Raw_Data_Demuxer demuxer(stage);
    Word_Serial_Reference reference;

    Byte_Reader input(data, size);
    const unsigned options = input.byte();
    std::vector<std::size_t> resets(options & reset_count_mask);
    std::generate(resets.begin(), resets.end(), [&] { return input.word(); });
    std::istringstream source("the words come from here");
    if ((options & has_source) != 0) {
        source.seekg(position);
        demuxer.set_anomaly_source(&source);
        reference.source_position = position;
    }

    for (std::size_t fed = 0; !input.empty(); ++fed) {
        if (std::find(resets.begin(), resets.end(), fed) != resets.end()) {
            demuxer.reset_sync();
            reference.reset_sync();
        }
        const std::uint16_t word = input.word();
        demuxer.feed_psb_raw_data(word);
        reference.feed(word);
        require(stage.frames.size() == reference.frames.size(), "number of frames");
        require(demuxer.get_sync_pattern_count() == reference.sync_patterns, "number of sync patterns");
        require(demuxer.get_frame_count() == reference.whole_frames, "number of whole frames");
    }
    require(stage.frames == reference.frames, "frames");
    require(stage.resync_count == 0, "the stage is left alone");
    require(printed.take_out() == reference.out, "standard output");
    require(printed.take_err() == reference.err, "standard error");
    return 0;
}
