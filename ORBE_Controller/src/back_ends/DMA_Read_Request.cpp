#include "back_ends/DMA_Read_Request.h"

#include "common/Console.h"

namespace Pelgar::ORBE {

namespace {

constexpr unsigned max_unreported_passes = 50;
constexpr unsigned max_passes = 100'000;

} // namespace

std::uint32_t DMA_Read_Request::fill(bool complete, const Read_Some& read_some) const {
    std::uint32_t total = 0;
    unsigned passes = 0;
    while (total < size) {
        total += read_some(buffer + total, size - total);
        ++passes;
        if (!complete) {
            break;
        }
        if (passes > max_passes) {
            console::err("Read timeout.\n");
            break;
        }
    }
    if (passes > max_unreported_passes) {
        console::out(passes, " read_issue_counter.\n");
    }
    return total;
}

} // namespace Pelgar::ORBE
