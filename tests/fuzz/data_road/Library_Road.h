// Fuzzing: the library's own road, from transfers to what a host reads, on the calling thread. Its parts are
// put together as the controller and the two ways of presenting the box do it.
#pragma once

#include "Road_Settings.h"
#include "Stream_Maker.h"

#include "NeuropixAPI.h"
#include "gain/C_L2_CH_Gain_Fix_Filter.h"
#include "host_streams/Electrode_Stream.h"
#include "packets/L2_CH_Results_NP_PXI_Format_Converter.h"
#include "packets/RHD_to_PXI_ADC_Format_Converter.h"
#include "rows/C_Async_PSB_And_RHD_Demux.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace Pelgar::ORBE::test {

struct Read_ADC_Packet {
    Neuropixels::PacketInfo info;
    std::vector<std::int16_t> row;
};

class Library_Road {
public:
    // What takes long to make is made by the first road and kept: the gain filters with their calibration,
    // and the stream of the ADC inputs. `prepare` makes it, so that nothing of it is printed later.
    static void prepare();

    Library_Road(const road_model::Road_Settings& settings, std::uint32_t streaming);

    void push(const Bytes& transfer);
    void work_on_transfers();
    void work_on_port(unsigned port);
    // Until no more than so many words are left.
    void work_on_rhd(std::size_t words_left);

    void resync() { m_demux.signal_to_resync(); }

    // Where the RHD thread would have begun to read what it cannot finish. False, and nothing done, when that
    // would take the thread.
    bool forget();

    void set_gains(unsigned seed);

    void begin_streaming(std::uint32_t streaming);
    void begin_run();
    void end_run();

    std::vector<Neuropixels::electrodePacket> take_packets(unsigned port);
    std::vector<Read_ADC_Packet> take_adc_packets();

    const demux::Async_NP_And_RHD_Demux& demux() const { return m_demux; }

private:
    void connect_port(unsigned port);
    void connect_adc();

    const road_model::Road_Settings m_settings;
    // Whichever of them the way takes.
    std::array<std::shared_ptr<npoe_adapter::L2_CH_Results_NP_PXI_Format_Converter>, 4> m_converters;
    std::array<std::shared_ptr<npoe_adapter::Electrode_Stream>, 4> m_streams;
    std::shared_ptr<npoe_adapter::RHD_to_PXI_ADC_Format_Converter> m_adc_converter;
    demux::Async_NP_And_RHD_Demux m_demux;
};

} // namespace Pelgar::ORBE::test
