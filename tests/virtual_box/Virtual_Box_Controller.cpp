#include "Virtual_Box_Controller.h"

#include <stdexcept>
#include <utility>

namespace Pelgar::ORBE::test {

Virtual_Box_Controller::Virtual_Box_Controller(std::shared_ptr<Virtual_Box> box) : m_box(std::move(box)) {
    create_modules();
}

Virtual_Box_Controller::~Virtual_Box_Controller() {
    Virtual_Box_Controller::close_driver_connection();
}

void Virtual_Box_Controller::write_register(std::uint32_t address, std::uint32_t value) {
    m_box->write_register(address, value);
}

std::uint32_t Virtual_Box_Controller::read_register(std::uint32_t address) {
    return m_box->read_register(address);
}

bool Virtual_Box_Controller::open_driver_connection(const std::string& /*device_name*/, bool /*flag*/) {
    const Virtual_Box::Open_Result result = m_box->open();
    if (result == Virtual_Box::Open_Result::mapping_fails) {
        throw std::runtime_error("map bar ioctl failed!");
    }
    m_open = result == Virtual_Box::Open_Result::opened;
    return m_open;
}

void Virtual_Box_Controller::close_driver_connection() {
    // Another back-end's connection is not this one's to close.
    if (std::exchange(m_open, false)) {
        m_box->close();
    }
}

bool Virtual_Box_Controller::set_extended_property(std::uint32_t /*key*/, std::uint32_t /*value*/) {
    return false;
}

bool Virtual_Box_Controller::setup_read(std::uint8_t* buffer, std::uint32_t size, std::uint8_t /*flag*/,
                                        std::uint32_t /*extra*/) {
    m_box->stream().setup_read(buffer, size);
    return true;
}

std::uint32_t Virtual_Box_Controller::read_stream(std::uint64_t /*unused*/, bool complete) {
    return m_box->stream().read(complete);
}

void Virtual_Box_Controller::write_xdma_register(std::uint32_t /*address*/, std::uint32_t /*value*/) {}

std::uint32_t Virtual_Box_Controller::read_xdma_register(std::uint32_t /*address*/) {
    return 0;
}

} // namespace Pelgar::ORBE::test
