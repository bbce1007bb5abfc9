// Tools, recorder. The library's own road from the rows of a raw recording to the packets of the host mode,
// without the time that the box takes: whoever decodes waits for the streams, and they for nobody. One thread
// decodes, the streams are read on any.
#pragma once

#include "description/Recording_Description.h"
#include "gain/C_L2_CH_Gain_Fix_Filter.h"
#include "host_streams/ADC_Inputs.h"
#include "host_streams/ADC_Stream.h"
#include "host_streams/Electrode_Stream.h"
#include "host_streams/Sync_Levels.h"
#include "host_streams/Sync_Source.h"
#include "probe/CP_L2_CH_Results_Null_Writer.h"
#include "rows/Row_Splitter.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace Pelgar::ORBE::recorder {

class Raw_Decoder {
public:
    // Packets that the queues of a probe and of the ADC inputs hold. Those of four probes fit into a
    // processor's cache.
    static constexpr std::size_t probe_queue_length = 2048;
    static constexpr std::size_t adc_queue_length = npoe_adapter::ADC_Stream::capacity;

    // The most bytes to decode before the next look at `is_enough`.
    static constexpr std::size_t piece_bytes = std::size_t{1} << 19U;

    // `gain_files` has a file, or none, for each probe of the description. Throws std::runtime_error for a
    // file that is no gain calibration.
    Raw_Decoder(const Recording_Description& description,
                const std::vector<std::optional<std::filesystem::path>>& gain_files);

    // Whole rows, in transfers of the length that the box hands over at once, of which the last one may be
    // shorter. Their bytes may go when this returns.
    void decode(std::span<const std::uint8_t> rows);

    // Whether it is time to wait, because what has been decoded since the last wait, with one piece more, may
    // take half of a queue.
    bool is_enough() const;

    // Returns when all packets that the rows so far complete are in the streams.
    void wait();

    // `probe` is the place in the description.
    npoe_adapter::Electrode_Stream& probe_stream(std::size_t probe) { return *m_streams.at(probe); }

    npoe_adapter::ADC_Stream& adc_stream() { return *m_adc_stream; }

private:
    void connect_probe(const Probe_Description& probe, const std::optional<std::filesystem::path>& gain_file);
    std::array<std::uint32_t, demux::np_port_count + 1> row_counts() const;
    static void apply_settings(C_L2_CH_Gain_Fix_Filter& filter, const Probe_Description& probe);

    npoe_adapter::Sync_Source m_sync_source;
    npoe_adapter::Sync_Levels m_sync_levels;
    npoe_adapter::ADC_Inputs m_adc_inputs;
    std::shared_ptr<npoe_adapter::ADC_Stream> m_adc_stream;
    std::vector<std::shared_ptr<npoe_adapter::Electrode_Stream>> m_streams;
    std::vector<std::shared_ptr<C_L2_CH_Gain_Fix_Filter>> m_filters;
    // Of the ports that nobody wants.
    std::shared_ptr<demux::CP_L2_CH_Results_Null_Writer> m_unwanted;
    // The threads, which end first.
    demux::NP_Workers m_workers;
    demux::C_RHD_Worker_Thread m_rhd_worker;
    std::unique_ptr<demux::Row_Splitter> m_splitter;
    // Of each port, and behind them of the ADC inputs, when it was last waited.
    std::array<std::uint32_t, demux::np_port_count + 1> m_rows_before{};
};

} // namespace Pelgar::ORBE::recorder
