// Test support, virtual box. The standard configuration port: words go into a FIFO, a control bit sends them
// to the configuration logic. Guarded by the register space that owns it.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace Pelgar::ORBE::test {

class HW_ICAP_Model {
public:
    enum class Behaviour : std::uint8_t { works, never_done, control_never_clears };

    void write_fifo(std::uint32_t word) { m_fifo.push_back(word); }

    void write_control(std::uint32_t value);
    std::uint32_t read_status() const;

    // The write bit clears when the words are through. A boot order among them is carried out then, since the
    // design that answers the read is gone afterwards: see `take_boot_address`.
    std::uint32_t read_control();

    // The flash address to boot from, once.
    std::optional<std::uint32_t> take_boot_address();

    void set_behaviour(Behaviour behaviour) { m_behaviour = behaviour; }

private:
    void carry_out();

    std::vector<std::uint32_t> m_fifo;
    bool m_writing = false;
    bool m_done = false;
    std::optional<std::uint32_t> m_boot_address;
    Behaviour m_behaviour = Behaviour::works;
};

} // namespace Pelgar::ORBE::test
