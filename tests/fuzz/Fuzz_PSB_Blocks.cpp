// Fuzzing: blocks of a probe's serial bus through the frame demuxer and the ADC-to-channel stage, against the
// plain decoder: channel sets and everything that is printed.
//
// An input is a sequence of blocks: a word with the number of bytes, then the bytes. The number 0xFFFF stands
// for a resynchronisation instead.
#include "Fuzz_Target.h"

#include "Byte_Reader.h"
#include "NP_Reference_Decoder.h"
#include "Printed_Output.h"
#include "Recording_Listeners.h"
#include "Require.h"
#include "probe/CP_L1_ADC_TO_Channel.h"
#include "probe/NP_PSB_Raw_Data_Demuxer.h"

#include <memory>
#include <vector>

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace Pelgar::ORBE::demux;
    using namespace Pelgar::ORBE::test;

    constexpr unsigned resynchronisation = 0xFFFF;
    Printed_Output printed;
    NP_Reference_Decoder reference;
    CP_L1_ADC_TO_Channel stage;
    NP_PSB_Raw_Data_Demuxer demuxer(stage);
    const auto listener = std::make_shared<Recording_L2_Listener>();
    stage.set_l2_ch_result_listener(listener);

    Byte_Reader input(data, size);
    while (!input.empty()) {
        const unsigned length = input.word();
        if (length == resynchronisation) {
            demuxer.reset_sync();
            stage.reset_and_resync_counters();
            reference.restart_counters();
        } else {
            // In memory of its own, so that a byte too far is seen.
            const auto bytes = input.bytes(length);
            const std::vector<std::uint8_t> block(bytes.begin(), bytes.end());
            demuxer.feed_psb_raw_data_block_buffer(block.data(), static_cast<unsigned>(block.size()));
            reference.feed_block(block);
        }
        require(printed.take_out() == reference.out, "standard output");
        require(printed.take_err() == reference.err, "standard error");
        reference.out.clear();
        reference.err.clear();
        require(listener->sets == reference.sets, "channel sets");
    }
    require(demuxer.get_sync_pattern_count() == 0, "blocks count no sync patterns");
    return 0;
}
