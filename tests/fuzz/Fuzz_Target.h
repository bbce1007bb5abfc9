// Fuzzing: what every target defines. Called by libFuzzer, or by Replay_Main.cpp, with one input at a time on
// one thread.
#pragma once

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
