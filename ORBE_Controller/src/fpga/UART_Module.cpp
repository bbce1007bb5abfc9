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

// The largest count that was ever handed to `send` in this process.
Relaxed<std::uint32_t> g_max_send_length;

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
    write_bytes(uart::transmit_data, static_cast<std::uint8_t>(count & uart::send_count_mask), data);
    read_status();
}

std::uint32_t UART_Module::read_status() const {
    const std::uint32_t status = read(uart::status);
    if ((status & uart::status_error_mask) != 0) {
        console::err("UART_Module error exist in transfer. status_reg : ", console::Hex{status}, "\n");
    }
    return status;
}

} // namespace Pelgar::ORBE
