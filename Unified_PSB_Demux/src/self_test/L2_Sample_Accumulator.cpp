#include "self_test/L2_Sample_Accumulator.h"

#include "common/Checked_Index.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <locale>

namespace Pelgar::ORBE {

namespace {

using Record = L2_Sample_Accumulator::Record;

Record record_of(const std::uint16_t (&values)[demux::channel_count]) {
    Record record;
    std::copy(std::begin(values), std::end(values), record.begin());
    return record;
}

void check_channel(std::size_t channel) {
    if (channel >= demux::channel_count) {
        throw_invalid_array_subscript();
    }
}

bool dump(const std::vector<Record>& records, const std::string& path, std::size_t channel) {
    std::ofstream file(path, std::ios::trunc);
    file.imbue(std::locale::classic());
    for (const Record& record : records) {
        file << record[channel] << '\n';
    }
    file.close();
    return !file.fail();
}

} // namespace

void L2_Sample_Accumulator::publish_ap_ch_data(std::uint16_t (&values)[demux::channel_count]) {
    const std::lock_guard lock(m_mutex);
    m_ap_records.push_back(record_of(values));
}

void L2_Sample_Accumulator::publish_lp_ch_data(std::uint16_t (&values)[demux::channel_count]) {
    const std::lock_guard lock(m_mutex);
    m_lp_records.push_back(record_of(values));
}

std::vector<Record> L2_Sample_Accumulator::ap_records() const {
    const std::lock_guard lock(m_mutex);
    return m_ap_records;
}

std::vector<Record> L2_Sample_Accumulator::lp_records() const {
    const std::lock_guard lock(m_mutex);
    return m_lp_records;
}

std::size_t L2_Sample_Accumulator::ap_record_count() const {
    const std::lock_guard lock(m_mutex);
    return m_ap_records.size();
}

std::size_t L2_Sample_Accumulator::lp_record_count() const {
    const std::lock_guard lock(m_mutex);
    return m_lp_records.size();
}

bool L2_Sample_Accumulator::copy_ap_channel(std::size_t channel, std::complex<double>* samples,
                                            std::size_t n) const {
    check_channel(channel);
    const std::lock_guard lock(m_mutex);
    if (m_ap_records.size() < n) {
        return false;
    }
    for (std::size_t i = 0; i < n; ++i) {
        samples[i] = m_ap_records[i][channel];
    }
    return true;
}

bool L2_Sample_Accumulator::dump_ap_channel(const std::string& base_name, std::size_t channel) const {
    check_channel(channel);
    return dump(ap_records(), base_name + "_ap_" + std::to_string(channel) + ".txt", channel);
}

bool L2_Sample_Accumulator::dump_lp_channel(const std::string& base_name, std::size_t channel) const {
    check_channel(channel);
    return dump(lp_records(), base_name + "_lp_" + std::to_string(channel) + ".txt", channel);
}

void L2_Sample_Accumulator::clear() {
    const std::lock_guard lock(m_mutex);
    m_ap_records.clear();
    m_lp_records.clear();
}

} // namespace Pelgar::ORBE
