// Test support: a register space that keeps every access in order and answers reads as it is told to. May be
// used from several threads.
#pragma once

#include "fpga/I_MemMapped_AXI.h"

#include <cstdint>
#include <deque>
#include <iosfwd>
#include <map>
#include <mutex>
#include <vector>

namespace Pelgar::ORBE::test {

struct Register_Access {
    enum class Kind { read, write };

    Kind kind;
    std::uint32_t address;
    std::uint32_t value; // what was written, or what the read answered

    bool operator==(const Register_Access&) const = default;
};

// How an access is named in a test's expectation.
Register_Access read_of(std::uint32_t address, std::uint32_t value);
Register_Access write_of(std::uint32_t address, std::uint32_t value);

// Shows an access in the message of a failed test.
std::ostream& operator<<(std::ostream& stream, const Register_Access& access);

class Register_Recorder : public I_MemMapped_AXI {
public:
    // A read answers the next of the values queued for its address; when there is none, the value the
    // register holds: the last one written by the code under test or set by the test, and 0 before.
    void set_value(std::uint32_t address, std::uint32_t value);
    void queue_reads(std::uint32_t address, const std::vector<std::uint32_t>& values);

    std::uint32_t value(std::uint32_t address) const;

    std::vector<Register_Access> accesses() const;
    std::vector<Register_Access> writes() const;

    // The values written to one address, in order.
    std::vector<std::uint32_t> writes_to(std::uint32_t address) const;

    // Forgets the accesses; values and queued reads stay.
    void clear_accesses();

    void write_register(std::uint32_t address, std::uint32_t value) override;
    std::uint32_t read_register(std::uint32_t address) override;
    // Recorded as one write a byte.
    void write_register_bytes(std::uint32_t address, std::uint8_t count, const std::uint8_t* bytes) override;

private:
    mutable std::mutex m_mutex;
    std::map<std::uint32_t, std::uint32_t> m_values;
    std::map<std::uint32_t, std::deque<std::uint32_t>> m_queued_reads;
    std::vector<Register_Access> m_accesses;
};

} // namespace Pelgar::ORBE::test
