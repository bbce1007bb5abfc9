// Test support, virtual box. What hangs on one probe port: the bridge that turns frames from the UART into
// I2C transactions, and the devices behind it. Locks itself; any thread.
#pragma once

#include "I2C_Device.h"
#include "Link_Faults.h"
#include "Probe_ASIC.h"
#include "Stream_Enables.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <string_view>
#include <vector>

namespace Pelgar::ORBE::test {

// One frame on the wire: 0x79, device, register, count, and the data of a write.
using Link_Frame = std::vector<std::uint8_t>;

class Virtual_Headstage {
public:
    // 8-bit addresses on the bus.
    static constexpr std::uint8_t serializer = 0x80;
    static constexpr std::uint8_t deserializer = 0x90;
    static constexpr std::uint8_t probe_eeprom = 0xA0;
    static constexpr std::uint8_t headstage_eeprom = 0xA4;
    static constexpr std::uint8_t probe_asic = 0xE0;

    // A headstage of version 5.2 with a probe: right device ids, serial number 0x1122334455667788, part
    // numbers "PRB_1_4_0480_1" and "NP2_HS_30".
    Virtual_Headstage();

    // ---- The box's side.

    // Takes one byte from the UART and returns what the bridge answers to it: nothing until a frame is whole.
    // Without a link the byte is lost.
    std::vector<std::uint8_t> take(std::uint8_t byte, bool link_is_up);
    void lose_power();

    // Whether the bridge took its time over the last answer.
    bool last_answer_is_late() const;

    // What the probe sends in the mode it is in.
    Probe_Output probe_output() const;

    // ---- The test's side.

    // A register of a device, as the bus would see it.
    std::uint8_t value(std::uint8_t device, std::uint8_t reg) const;

    // Replaces it, for good.
    void set(std::uint8_t device, std::uint8_t reg, std::uint8_t value);
    // Makes every read of the register find its lowest bit changed.
    void flicker(std::uint8_t device, std::uint8_t reg);
    void set_text(std::uint8_t device, std::uint8_t reg, std::string_view text);

    // The chains of the probe ASIC by their registers.
    std::vector<Probe_ASIC::Upload> uploads(std::uint8_t chain) const;
    std::vector<std::uint8_t> chain(std::uint8_t chain) const;

    // Every whole frame that reached the bridge, in order, and the bytes that belonged to none.
    std::vector<Link_Frame> frames() const;
    std::size_t stray_bytes() const;

    // Forgets the frames; transactions are counted from 1 again.
    void forget_frames();

    void fail_once(std::size_t transaction, Link_Fault fault);
    void fail_from(std::size_t transaction, Link_Fault fault);
    void clear_faults();

private:
    bool frame_is_whole() const;
    std::vector<std::uint8_t> carry_out(const Link_Frame& frame);
    I2C_Device* device_at(std::uint8_t address);

    mutable std::mutex m_mutex;
    I2C_Device m_serializer;
    I2C_Device m_deserializer;
    I2C_Device m_probe_eeprom;
    I2C_Device m_headstage_eeprom;
    Probe_ASIC m_asic;
    std::map<std::uint8_t, I2C_Device*> m_devices;
    Link_Frame m_incoming;
    std::vector<Link_Frame> m_frames;
    std::size_t m_stray_bytes = 0;
    Link_Faults m_faults;
    bool m_late = false;
};

} // namespace Pelgar::ORBE::test
