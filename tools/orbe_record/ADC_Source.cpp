#include "ADC_Source.h"

#include "Opened_Box.h"
#include "formats/Sample_Numbers.h"

namespace Pelgar::ORBE::recorder {

void ADC_Source::read(Batch& batch) const {
    int count = 0;
    Neuropixels::ADC_readPackets(Opened_Box::adc_slot, batch.infos + batch.count,
                                 batch.rows + batch.count * adc_row_length, static_cast<int>(adc_row_length),
                                 static_cast<int>(batch_packets - batch.count), &count);
    batch.count += static_cast<std::size_t>(count);
}

double ADC_Source::fill() const {
    int available = 0;
    int headroom = 1;
    Neuropixels::ADC_getPacketFifoStatus(Opened_Box::adc_slot, &available, &headroom);
    return static_cast<double>(available) / (available + headroom);
}

std::uint64_t ADC_Source::first_sample(const Batch& batch) {
    return Sample_Numbers().number_of(batch.infos[0].Timestamp);
}

void ADC_Source::write(A_Recording_Writer& writer, std::size_t /*index*/, const Batch& batch) {
    writer.write_adc({batch.infos, batch.count}, {batch.rows, batch.count * adc_row_length});
}

} // namespace Pelgar::ORBE::recorder
