#include "Register_Recorder.h"

#include <algorithm>
#include <iterator>
#include <ostream>

namespace Pelgar::ORBE::test {

Register_Access read_of(std::uint32_t address, std::uint32_t value) {
    return {Register_Access::Kind::read, address, value};
}

Register_Access write_of(std::uint32_t address, std::uint32_t value) {
    return {Register_Access::Kind::write, address, value};
}

std::ostream& operator<<(std::ostream& stream, const Register_Access& access) {
    const char* kind = access.kind == Register_Access::Kind::read ? "read" : "write";
    return stream << kind << std::hex << " 0x" << access.address << " 0x" << access.value << std::dec;
}

void Register_Recorder::set_value(std::uint32_t address, std::uint32_t value) {
    const std::lock_guard lock(m_mutex);
    m_values[address] = value;
}

void Register_Recorder::queue_reads(std::uint32_t address, const std::vector<std::uint32_t>& values) {
    const std::lock_guard lock(m_mutex);
    auto& queue = m_queued_reads[address];
    queue.insert(queue.end(), values.begin(), values.end());
}

std::uint32_t Register_Recorder::value(std::uint32_t address) const {
    const std::lock_guard lock(m_mutex);
    const auto entry = m_values.find(address);
    return entry == m_values.end() ? 0 : entry->second;
}

std::vector<Register_Access> Register_Recorder::accesses() const {
    const std::lock_guard lock(m_mutex);
    return m_accesses;
}

std::vector<Register_Access> Register_Recorder::writes() const {
    const auto all = accesses();
    std::vector<Register_Access> writes;
    std::copy_if(all.begin(), all.end(), std::back_inserter(writes),
                 [](const Register_Access& access) { return access.kind == Register_Access::Kind::write; });
    return writes;
}

std::vector<std::uint32_t> Register_Recorder::writes_to(std::uint32_t address) const {
    std::vector<std::uint32_t> values;
    for (const Register_Access& access : writes()) {
        if (access.address == address) {
            values.push_back(access.value);
        }
    }
    return values;
}

void Register_Recorder::clear_accesses() {
    const std::lock_guard lock(m_mutex);
    m_accesses.clear();
}

void Register_Recorder::write_register(std::uint32_t address, std::uint32_t value) {
    const std::lock_guard lock(m_mutex);
    m_values[address] = value;
    m_accesses.push_back(write_of(address, value));
}

std::uint32_t Register_Recorder::read_register(std::uint32_t address) {
    const std::lock_guard lock(m_mutex);
    std::uint32_t value = 0;
    if (auto& queue = m_queued_reads[address]; !queue.empty()) {
        value = queue.front();
        queue.pop_front();
    } else if (const auto entry = m_values.find(address); entry != m_values.end()) {
        value = entry->second;
    }
    m_accesses.push_back(read_of(address, value));
    return value;
}

void Register_Recorder::write_register_bytes(std::uint32_t address, std::uint8_t count,
                                             const std::uint8_t* bytes) {
    for (std::uint8_t i = 0; i < count; ++i) {
        write_register(address, bytes[i]);
    }
}

} // namespace Pelgar::ORBE::test
