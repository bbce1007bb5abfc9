#include "Self_Test_Recordings.h"

#include "generator/Recording_Generator.h"
#include "stream_format/Wire_Format.h"

#include <fstream>

namespace Pelgar::ORBE::test {

namespace {

using namespace recording;

Recording_Options options_of(unsigned port, Signal_Kind signal, std::uint64_t blocks) {
    Recording_Options options;
    options.blocks = blocks;
    options.ports = {port + 1};
    options.rhd = false;
    options.signals = {{signal, every_channel()}};
    return options;
}

// With a single port the rows of its super frames follow each other. A word lies in the file low byte first.
std::size_t offset_of_word(std::size_t super_frame, std::size_t frame, std::size_t word) {
    const std::size_t row = super_frame * rows_per_super_frame + frame * rows_per_frame + word / row_words;
    return row * row_bytes + row_header_bytes + word % row_words * sizeof(std::uint16_t);
}

} // namespace

std::vector<std::uint8_t> pattern_recording(unsigned port) {
    return make_recording(options_of(port, Signal_Kind::pattern, 1));
}

void end_block_after(std::vector<std::uint8_t>& recording, std::size_t super_frames) {
    recording[offset_of_word(super_frames, 0, 0) + 1] &= static_cast<std::uint8_t>(~(super_frame_flag >> 8U));
}

void spoil_sample(std::vector<std::uint8_t>& recording, std::size_t super_frame, std::size_t channel) {
    // An ADC pair serves 24 channels, the first ADC the even ones; frame 0 carries LFP samples.
    const std::size_t adc = channel / 24 * 2 + channel % 2;
    const std::size_t frame = 1 + channel % 24 / 2;
    recording[offset_of_word(super_frame, frame, word_of_value(adc))] ^= 1U;
}

std::vector<std::uint8_t> tone_recording(unsigned port, double bin, std::uint64_t blocks) {
    Recording_Options options = options_of(port, Signal_Kind::tone, blocks);
    options.tone_frequency = frequency_of_bin(bin);
    return make_recording(options);
}

void write_recording(const std::string& path, const std::vector<std::uint8_t>& recording) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char*>(recording.data()),
               static_cast<std::streamsize>(recording.size()));
}

} // namespace Pelgar::ORBE::test
