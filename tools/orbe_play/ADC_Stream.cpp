#include "ADC_Stream.h"

#include "Packet_Difference.h"

namespace Pelgar::ORBE::recording {

namespace {

constexpr int slot = 0;

} // namespace

ADC_Stream::ADC_Stream(const std::filesystem::path& recording) : m_expectation(Piece_Reader(recording)) {}

int ADC_Stream::read(Batch& batch, int count) const {
    int received = 0;
    Neuropixels::ADC_readPackets(slot, batch.infos.data(), batch.samples.data(), static_cast<int>(channels),
                                 count, &received);
    return received;
}

std::string ADC_Stream::difference(const Batch& batch, std::size_t index) {
    const ADC_Packet* const expected = m_expectation.next();
    if (expected == nullptr) {
        return "not in the recording";
    }
    const std::span<const std::int16_t> samples(batch.samples.data() + index * channels, channels);
    return difference_of(batch.infos[index], samples, *expected);
}

} // namespace Pelgar::ORBE::recording
