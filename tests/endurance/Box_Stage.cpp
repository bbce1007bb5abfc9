#include "Box_Stage.h"

#include "Endless_Rows.h"
#include "Stage_Limits.h"
#include "Virtual_Box_Controller.h"

#include <adapter/Adapter_State.h>

#include <limits>
#include <optional>
#include <utility>

namespace Pelgar::ORBE::test {

namespace {

std::unique_ptr<A_Row_Source> make_rows(const Stage_Options& options) {
    return std::make_unique<Endless_Rows>(options.rows);
}

} // namespace

Box_Stage::Box_Stage(Packet_Layout layout, const Stage_Options& options)
    : m_layout(layout), m_box(std::make_shared<Virtual_Box>(make_rows(options))),
      m_library(layout, options.ports),
      m_pace(windows_of(layout), options.ports,
             [this](std::uint64_t ticks) { stream().set_limit(m_first_tick + ticks); }),
      m_host(layout, m_library.slot(), options.ports, options.rows, m_pace) {
    for (std::size_t port = options.ports; port < box_port_count; ++port) {
        m_box->lock_at_look(port, std::nullopt);
    }
    stream().set_observer([this](std::span<const std::uint8_t> bytes) {
        m_bytes += bytes.size();
        m_pace.handed_over(stream().ticks() - m_first_tick);
    });
    *npoe_adapter::g_controller_factory = [box = m_box](bool) {
        return std::make_shared<ORBE_Controller_Library>(std::make_shared<Virtual_Box_Controller>(box),
                                                         false);
    };
}

Box_Stage::~Box_Stage() {
    *npoe_adapter::g_controller_factory = {};
}

std::uint64_t Box_Stage::longest_opening() const {
    return m_layout == Packet_Layout::own ? longest_own_opening : std::numeric_limits<std::uint64_t>::max();
}

void Box_Stage::begin(std::uint64_t ticks) {
    m_first_tick = stream().ticks();
    m_last_tick = m_first_tick + ticks;
    m_bytes_before = m_bytes;
    stream().set_limit(m_first_tick);
    m_library.open();
    m_library.start();
    m_pace.begin(ticks);
    m_host.start();
}

std::string Box_Stage::end() {
    std::string fault = is_over() ? compare_bytes() : "";
    if (m_layout == Packet_Layout::host) {
        m_host.finish();
        m_library.stop();
    }
    m_library.close();
    m_host.finish();
    m_box->forget_accesses();
    for (std::size_t port = 0; port < box_port_count; ++port) {
        m_box->headstage(port).forget_frames();
    }
    return fault;
}

// The library counts in 32 bits.
std::string Box_Stage::compare_bytes() const {
    const auto sent = static_cast<std::uint32_t>(m_bytes - m_bytes_before);
    const std::uint32_t counted = npoe_adapter::current_controller()->get_total_bytes_read();
    return sent == counted ? ""
                           : "the library has counted " + std::to_string(counted) + " bytes instead of " +
                                 std::to_string(sent) + ", modulo 2^32";
}

} // namespace Pelgar::ORBE::test
