// Test support, controller. Recordings of one port for the self tests, damaged in chosen super frames.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Pelgar::ORBE::test {

// One block of port `port` (0..3) that carries the probe's test pattern.
std::vector<std::uint8_t> pattern_recording(unsigned port);

// Lets the block deliver only its first `super_frames` AP sample sets.
void end_block_after(std::vector<std::uint8_t>& recording, std::size_t super_frames);

// Changes the AP sample of a channel in one super frame.
void spoil_sample(std::vector<std::uint8_t>& recording, std::size_t super_frame, std::size_t channel);

// `blocks` blocks of port `port` (0..3) with a tone in bin `bin` of 1,024 on all channels.
std::vector<std::uint8_t> tone_recording(unsigned port, double bin, std::uint64_t blocks);

void write_recording(const std::string& path, const std::vector<std::uint8_t>& recording);

} // namespace Pelgar::ORBE::test
