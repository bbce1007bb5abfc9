// Layer: device controller, probe link. Turns I2C register accesses into frames to the headstage bridge on a
// port's UART. Called on the host's threads, one transaction at a time because answers carry no tag; every
// transaction blocks until the bridge has answered or the UART's receive budget of 10 ms a byte has run out.
#pragma once

#include <cstdint>

namespace Pelgar::ORBE {

class UART_Module;

// Device addresses are 8-bit I2C addresses with the read/write bit in bit 0, which reads set. Every access
// throws std::runtime_error("UART_Module recv timeout") when the bridge stays silent.
class I2C_Over_GSML_Module {
public:
    static constexpr std::uint8_t asic_address = 0xE0;
    static constexpr std::uint8_t serializer_address = 0x80;
    static constexpr std::uint8_t deserializer_address = 0x90;

    // `uart` must outlive the module, or its use by it.
    explicit I2C_Over_GSML_Module(UART_Module* uart);
    ~I2C_Over_GSML_Module();
    I2C_Over_GSML_Module(const I2C_Over_GSML_Module&) = delete;
    I2C_Over_GSML_Module& operator=(const I2C_Over_GSML_Module&) = delete;

    // Another one from now on, as after the connection to the box was opened anew.
    void use_uart(UART_Module* uart) { m_uart = uart; }

    // Throws std::runtime_error("qbsc_writeI2C ACK error") when the bridge does not acknowledge, unless the
    // caller tolerates that; tolerated errors are counted.
    void qbsc_writeI2C(std::uint8_t device, std::uint8_t reg, std::uint8_t value, bool ignore_ack_error);

    // The register's value, which is also stored in `*value`, there even when the bridge reports a failure:
    // std::runtime_error("qbsc_readI2C error").
    std::uint8_t qbsc_readI2C(std::uint8_t device, std::uint8_t reg, std::uint8_t* value);

    // Reads `count` bytes, from `reg` on, in one transaction. Throws
    // std::runtime_error("qbsc_readI2C_n_bytes error") and leaves `buffer` alone when the bridge reports a
    // failure.
    void qbsc_readI2C_n_bytes(std::uint8_t device, std::uint8_t reg, std::uint8_t* buffer,
                              std::uint8_t count);

    // Logs how many transactions were made and how many of them failed and were tolerated.
    void print_statistics() const;

    std::uint8_t read_asic(std::uint8_t reg, std::uint8_t* value);
    void write_asic(std::uint8_t reg, std::uint8_t value, bool ignore_ack_error);
    std::uint8_t read_serializer(std::uint8_t reg, std::uint8_t* value);
    void write_serializer(std::uint8_t reg, std::uint8_t value);
    std::uint8_t read_deserializer(std::uint8_t reg, std::uint8_t* value);
    void write_deserializer(std::uint8_t reg, std::uint8_t value);

private:
    UART_Module* m_uart;
    std::uint32_t stat_write_transactions_total = 0;
    std::uint32_t stat_write_transactions_with_error = 0;
    std::uint32_t stat_read_transactions_total = 0;
    // Stays 0, because a read that fails throws.
    std::uint32_t stat_read_transactions_with_error = 0;
};

} // namespace Pelgar::ORBE
