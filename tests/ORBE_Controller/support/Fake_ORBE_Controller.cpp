#include "Fake_ORBE_Controller.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace Pelgar::ORBE::test {

Fake_ORBE_Controller::Fake_ORBE_Controller() {
    create_modules();
}

void Fake_ORBE_Controller::queue_stream_read(std::vector<std::uint8_t> bytes) {
    const std::lock_guard lock(m_mutex);
    m_stream_reads.push_back({std::move(bytes), std::nullopt, std::nullopt});
}

void Fake_ORBE_Controller::queue_stream_read(std::vector<std::uint8_t> bytes, std::uint32_t answer) {
    const std::lock_guard lock(m_mutex);
    m_stream_reads.push_back({std::move(bytes), std::nullopt, answer});
}

void Fake_ORBE_Controller::queue_stream_error(std::string text) {
    const std::lock_guard lock(m_mutex);
    m_stream_reads.push_back({{}, std::move(text), std::nullopt});
}

std::size_t Fake_ORBE_Controller::queued_stream_reads() const {
    const std::lock_guard lock(m_mutex);
    return m_stream_reads.size();
}

void Fake_ORBE_Controller::set_open_result(bool result) {
    const std::lock_guard lock(m_mutex);
    m_open_result = result;
}

void Fake_ORBE_Controller::queue_open_results(const std::vector<bool>& results) {
    const std::lock_guard lock(m_mutex);
    m_open_results.insert(m_open_results.end(), results.begin(), results.end());
}

void Fake_ORBE_Controller::set_open_error(std::string text) {
    const std::lock_guard lock(m_mutex);
    m_open_error = std::move(text);
}

void Fake_ORBE_Controller::set_write_error(std::string text) {
    const std::lock_guard lock(m_mutex);
    m_write_error = std::move(text);
}

void Fake_ORBE_Controller::clear_write_error() {
    const std::lock_guard lock(m_mutex);
    m_write_error.reset();
}

std::vector<Fake_ORBE_Controller::Open_Call> Fake_ORBE_Controller::open_calls() const {
    const std::lock_guard lock(m_mutex);
    return m_open_calls;
}

int Fake_ORBE_Controller::close_count() const {
    const std::lock_guard lock(m_mutex);
    return m_close_count;
}

std::vector<Fake_ORBE_Controller::Setup_Call> Fake_ORBE_Controller::setup_calls() const {
    const std::lock_guard lock(m_mutex);
    return m_setup_calls;
}

std::vector<Fake_ORBE_Controller::Read_Call> Fake_ORBE_Controller::read_calls() const {
    const std::lock_guard lock(m_mutex);
    return m_read_calls;
}

void Fake_ORBE_Controller::write_register(std::uint32_t address, std::uint32_t value) {
    {
        const std::lock_guard lock(m_mutex);
        if (m_write_error) {
            throw std::runtime_error(*m_write_error);
        }
    }
    m_registers.write_register(address, value);
}

std::uint32_t Fake_ORBE_Controller::read_register(std::uint32_t address) {
    return m_registers.read_register(address);
}

bool Fake_ORBE_Controller::open_driver_connection(const std::string& device_name, bool flag) {
    const std::lock_guard lock(m_mutex);
    m_open_calls.push_back({device_name, flag});
    if (m_open_error) {
        throw std::runtime_error(*m_open_error);
    }
    if (m_open_results.empty()) {
        return m_open_result;
    }
    const bool result = m_open_results.front();
    m_open_results.pop_front();
    return result;
}

void Fake_ORBE_Controller::close_driver_connection() {
    const std::lock_guard lock(m_mutex);
    ++m_close_count;
}

bool Fake_ORBE_Controller::set_extended_property(std::uint32_t /*key*/, std::uint32_t /*value*/) {
    return false;
}

bool Fake_ORBE_Controller::setup_read(std::uint8_t* buffer, std::uint32_t size, std::uint8_t flag,
                                      std::uint32_t extra) {
    const std::lock_guard lock(m_mutex);
    m_setup_calls.push_back({buffer, size, flag, extra});
    return true;
}

std::uint32_t Fake_ORBE_Controller::read_stream(std::uint64_t unused, bool complete) {
    const std::lock_guard lock(m_mutex);
    m_read_calls.push_back({unused, complete});
    if (m_stream_reads.empty()) {
        return 0;
    }
    const Stream_Read read = std::move(m_stream_reads.front());
    m_stream_reads.pop_front();
    if (read.error) {
        throw std::runtime_error(*read.error);
    }
    if (m_setup_calls.empty()) {
        return 0;
    }
    const Setup_Call& target = m_setup_calls.back();
    const std::size_t count = std::min<std::size_t>(read.bytes.size(), target.size);
    std::copy_n(read.bytes.begin(), count, target.buffer);
    return read.answer.value_or(static_cast<std::uint32_t>(count));
}

void Fake_ORBE_Controller::write_xdma_register(std::uint32_t /*address*/, std::uint32_t /*value*/) {}

std::uint32_t Fake_ORBE_Controller::read_xdma_register(std::uint32_t /*address*/) {
    return 0;
}

} // namespace Pelgar::ORBE::test
