// Layer: device controller. The box-wide switches of the design, which all live in one configuration
// register. Called on any of the host's threads; blocks only while another one reads, changes and writes the
// register.
#pragma once

#include "common/Export.h"
#include "fpga/GPIO_Module.h"

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <mutex>

namespace Pelgar::ORBE {

class ORBE_EXPORT ORBE_Configurator {
public:
    // `gpio` is the module of the configuration register.
    explicit ORBE_Configurator(std::shared_ptr<GPIO_Module> gpio);

    // Everything off: streams, port power; CORE mode.
    void reset_configuration();

    // Enables exactly the streams of the listed port indices, 0 to 3. Any other index throws
    // std::runtime_error("enable_np_streams argument invalid") and changes nothing.
    void enable_np_streams(std::initializer_list<unsigned> ports);

    // Routes the UART of the probe link to the port index, 0 to 3. Any other one throws
    // std::runtime_error("assign_uart_to_np_channel invalid") and changes nothing.
    void assign_uart_to_np_channel(unsigned char channel);

    // ONE mode when true, CORE mode when false.
    void set_one_mode(bool one);

    // Whether the stream carries the end-of-packet marks that the Windows DMA driver needs.
    void set_tlast_generation_mode_for_Windows_os(bool on);

    // Power of the probe ports.
    void set_VLM004_power(bool on);

    void soft_trigger_pulse();

    // Whether port 4 serves a Neuropixels probe.
    void assign_port_4_to_np(bool on);

    // Selects the TTL input that triggers the acquisition, 0 to 3. Of a larger index only the two low bits
    // count, and a message says so.
    void set_hw_trigger_ttl_source(unsigned ttl_input_index);

    // Logs which NP ports have locked to their probe's clock (bit i: port index i) and returns whether any
    // has.
    static bool print_np_ports_status(unsigned status);

private:
    // Replaces the bits of `mask` in the configuration register by `value`.
    void replace_bits(std::uint32_t mask, std::uint32_t value);
    void set_bit(std::uint32_t bit, bool value);

    std::shared_ptr<GPIO_Module> m_gpio;
    // Held for each read-modify-write, so that routing the probe link on one thread does not undo the stream
    // enables that another one sets.
    std::mutex m_mutex;
};

} // namespace Pelgar::ORBE
