#include "connection/M_DataStream.h"

#include "common/Console.h"
#include "common/Relaxed.h"

#include <chrono>
#include <cstdint>
#include <utility>

namespace Pelgar::ORBE {

namespace {

constexpr std::uintptr_t word_alignment = 4;
constexpr std::uintptr_t page_alignment = 4096;

// What the stream's interface asks for and no back-end looks at.
constexpr std::uint8_t setup_flag = 0;
constexpr std::uint32_t setup_extra = 1000;
constexpr std::uint64_t read_unused = 0;

// Counts the reads of the process modulo 256, so that the wait is printed for every 256th of them.
Relaxed<std::uint8_t> g_read_counter;

// Whether the DMA engine can write into the buffer at all.
bool check_alignment(const unsigned char* buffer) {
    const auto address = reinterpret_cast<std::uintptr_t>(buffer);
    if (address % word_alignment != 0) {
        console::out("Buffer must be DW aligned\n");
        return false;
    }
    if (address % page_alignment != 0) {
        console::out("Buffer is not page aligned\n");
    }
    return true;
}

} // namespace

M_DataStream::M_DataStream(I_MemMapped_XDMA* /*xdma*/, std::shared_ptr<ORBE_Configurator> configurator,
                           I_InputDataStream* stream)
    : m_configurator(std::move(configurator)), m_stream(stream) {}

void M_DataStream::prepare_buffer_for_hw_read(unsigned char* buffer, unsigned size) {
    if (!check_alignment(buffer)) {
        return;
    }
    // The edge, not the level, makes the design start a packet anew.
    m_configurator->set_tlast_generation_mode_for_Windows_os(false);
    m_configurator->set_tlast_generation_mode_for_Windows_os(true);
    exchange_buffer(buffer, size);
}

void M_DataStream::exchange_buffer(unsigned char* buffer, unsigned size) {
    m_stream->setup_read(buffer, size, setup_flag, setup_extra);
}

unsigned M_DataStream::read(unsigned char* buffer, unsigned /*size*/, bool complete) {
    if (!check_alignment(buffer)) {
        return 0;
    }
    const auto start = std::chrono::steady_clock::now();
    const std::uint32_t count = m_stream->read_stream(read_unused, complete);
    const std::chrono::nanoseconds elapsed = std::chrono::steady_clock::now() - start;
    if (g_read_counter.fetch_add(1) == 0) {
        // The number is in microseconds whatever its label says; readers of old logs count on both.
        console::out("Interrupt wait duration : ", elapsed.count() / 1000, " ms \n");
    }
    return count;
}

void M_DataStream::disable_data_source() {
    m_configurator->reset_configuration();
}

} // namespace Pelgar::ORBE
