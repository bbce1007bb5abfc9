#include "flash/Box_Flash.h"

#include "connection/Box_Connection.h"
#include "flash/Configuration_Flash.h"
#include "flash/SPI_Flash_Programmer.h"

#include <loguru.hpp>

#include <algorithm>
#include <span>

namespace Pelgar::ORBE {

namespace flash = configuration_flash;

namespace {

// The page that begins with the record; empty when it cannot be read.
std::string read_hw_info_page(SPI_Flash_Programmer& programmer) {
    std::string page;
    programmer.read_flash(flash::hw_info_address, flash::page_size, &page);
    return page;
}

} // namespace

bool Box_Flash::program_flash(const char* path, unsigned address, const Flash_Progress_Listener& listener) {
    LOG_SCOPE_F(INFO, "program_flash");
    LOG_F(INFO, "path : %s, address : %08x", path != nullptr ? path : "(none)", address);
    SPI_Flash_Programmer programmer(&m_box.modules().spi());
    return programmer.program_flash(path, address, listener);
}

std::unique_ptr<ORBE_HW_Info> Box_Flash::read_ORBE_HW_info() {
    LOG_SCOPE_F(INFO, "read_ORBE_HW_info");
    SPI_Flash_Programmer programmer(&m_box.modules().spi());
    const std::string page = read_hw_info_page(programmer);
    if (page.empty()) {
        return nullptr;
    }
    auto info = std::make_unique<ORBE_HW_Info>();
    std::copy_n(page.begin(), ORBE_HW_Info::size, info->bytes.begin());
    return info;
}

bool Box_Flash::program_ORBE_HW_info(const ORBE_HW_Info& info) {
    LOG_SCOPE_F(INFO, "program_ORBE_HW_info");
    SPI_Flash_Programmer programmer(&m_box.modules().spi());
    std::string page = read_hw_info_page(programmer);
    if (page.empty()) {
        return false;
    }
    std::copy(info.bytes.begin(), info.bytes.end(), page.begin());
    return programmer.rewrite_sector(flash::hw_info_address,
                                     {reinterpret_cast<const std::uint8_t*>(page.data()), page.size()});
}

} // namespace Pelgar::ORBE
