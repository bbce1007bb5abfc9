#include "fpga/UART_Module.h"

#include "common/Console.h"
#include "common/Relaxed.h"
#include "common/Waiting.h"
#include "fpga/FPGA_Register_Map.h"

#include <chrono>
#include <stdexcept>

namespace Pelgar::ORBE {

namespace uart = register_map::uart;

namespace {

constexpr std::chrono::milliseconds poll_interval{1};

// More than the receive FIFO holds.
constexpr unsigned most_left_over_bytes = 64;

// The largest count that was ever handed to `send` in this process.
Relaxed<std::uint32_t> g_max_send_length;

// Answers carry no tag: a byte that is left of one would be taken for the first of the next, and so on for
// ever. The box keeps it over closings, so this outlives the module.
Relaxed<bool> g_answer_is_distrusted;

} // namespace

UART_Module::UART_Module(I_MemMapped_AXI* axi, std::uint32_t base_address)
    : A_FPGA_Module("UART_Module", axi, base_address) {}

void UART_Module::receive(std::uint8_t* out, std::uint32_t count, std::uint32_t timeout_ms) {
    std::uint32_t countdown = timeout_ms;
    for (std::uint32_t i = 0; i < count; ++i) {
        countdown = timeout_ms;
        while ((read_status() & uart::status_receive_data_valid) == 0) {
            wait_for(poll_interval);
            if (countdown > 0) {
                --countdown;
            }
            if (countdown == 0) {
                distrust_answer();
                throw std::runtime_error("UART_Module recv timeout");
            }
        }
        out[i] = static_cast<std::uint8_t>(read(uart::receive_data));
    }
    // Tells how much of the budget was left if the last byte had to be waited for.
    if (countdown != timeout_ms) {
        console::out("Reception complete at time : ", countdown, "\n");
    }
}

void UART_Module::send(const std::uint8_t* data, std::uint32_t count) {
    if (count > g_max_send_length) {
        console::out("max_send_length : ", count, "\n");
        g_max_send_length = count;
    }
    if (m_drops_left_over_answers && g_answer_is_distrusted) {
        g_answer_is_distrusted = false;
        drop_received();
    }
    write_bytes(uart::transmit_data, static_cast<std::uint8_t>(count & uart::send_count_mask), data);
    read_status();
}

void UART_Module::distrust_answer() {
    g_answer_is_distrusted = true;
}

void UART_Module::drop_received() {
    for (unsigned i = 0; i < most_left_over_bytes && (read_status() & uart::status_receive_data_valid) != 0;
         ++i) {
        read(uart::receive_data);
    }
}

std::uint32_t UART_Module::read_status() const {
    const std::uint32_t status = read(uart::status);
    if ((status & uart::status_error_mask) != 0) {
        console::err("UART_Module error exist in transfer. status_reg : ", console::Hex{status}, "\n");
    }
    return status;
}

} // namespace Pelgar::ORBE
