#include "Probe_Source.h"

#include "Opened_Box.h"
#include "formats/Sample_Numbers.h"

namespace Pelgar::ORBE::recorder {

namespace {

constexpr int dock = 1;

} // namespace

void Probe_Source::read(Batch& batch) const {
    int count = 0;
    Neuropixels::readElectrodeData(Opened_Box::probe_slot, m_port, dock, batch.packets + batch.count, &count,
                                   static_cast<int>(batch_packets - batch.count));
    batch.count += static_cast<std::size_t>(count);
}

double Probe_Source::fill() const {
    int available = 0;
    int headroom = 1;
    Neuropixels::getElectrodeDataFifoState(Opened_Box::probe_slot, m_port, dock, &available, &headroom);
    return static_cast<double>(available) / (available + headroom);
}

std::uint64_t Probe_Source::first_sample(const Batch& batch) {
    return Sample_Numbers().number_of(batch.packets[0].timestamp[0]);
}

void Probe_Source::write(A_Recording_Writer& writer, std::size_t index, const Batch& batch) {
    writer.write_probe(index, {batch.packets, batch.count});
}

} // namespace Pelgar::ORBE::recorder
