// Layer: demultiplexer, self tests. Keeps every AP and LFP record of one port. Publishing runs on the port's
// NP worker thread and allocates while the lists grow; everything else is for any thread and blocks only
// while another call is under way.
#pragma once

#include "common/Export.h"
#include "probe/I_L2_Demux_CH_Results.h"

#include <array>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

namespace Pelgar::ORBE {

class ORBE_EXPORT L2_Sample_Accumulator : public demux::I_L2_Demux_CH_Results {
public:
    // One sample of every channel, by channel number.
    using Record = std::array<std::uint16_t, demux::channel_count>;

    void publish_ap_ch_data(std::uint16_t (&values)[demux::channel_count]) override;
    void publish_lp_ch_data(std::uint16_t (&values)[demux::channel_count]) override;

    // Copies of the lists, oldest record first.
    std::vector<Record> ap_records() const;
    std::vector<Record> lp_records() const;

    std::size_t ap_record_count() const;
    std::size_t lp_record_count() const;

    // Copies the first n AP samples of a channel (0..383) into the real parts; the imaginary parts are 0.
    // False, with nothing written, when there are fewer. Throws std::out_of_range("invalid array<T, N>
    // subscript") for another channel.
    bool copy_ap_channel(std::size_t channel, std::complex<double>* samples, std::size_t n) const;

    // Write one channel (0..383) of a list as text, one value a line, into the file "<base>_ap_<channel>.txt"
    // or "<base>_lp_<channel>.txt", which `load_sample_data_from_file` reads. False when the file cannot be
    // written. Throw as above.
    bool dump_ap_channel(const std::string& base_name, std::size_t channel) const;
    bool dump_lp_channel(const std::string& base_name, std::size_t channel) const;

    // Empties both lists.
    void clear();

private:
    mutable std::mutex m_mutex;
    std::vector<Record> m_ap_records;
    std::vector<Record> m_lp_records;
};

} // namespace Pelgar::ORBE
