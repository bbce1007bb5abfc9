#include "Info_Command.h"

#include "Opened_Box.h"
#include "probe_link/EEPROM_Layout.h"
#include "terminal/Exit_Codes.h"
#include "terminal/Terminal.h"
#include "terminal/Text_Format.h"

#include <array>
#include <cstdio>
#include <string>

namespace Pelgar::ORBE::tools {

namespace {

constexpr int output_descriptor = 1;
constexpr unsigned port_count = demux::np_port_count;
constexpr unsigned part_number_length = probe_eeprom::part_number_max_length + 1; // with the closing zero
using Part_Number = std::array<char, part_number_length>;

// What a headstage and its probe say of themselves.
struct Port_Identity {
    bool known = false;
    Part_Number headstage{};
    Part_Number probe{};
    unsigned long long probe_serial_number = 0;
};

Port_Identity ask(ORBE_Controller_Library& controller, unsigned port) {
    Port_Identity identity;
    identity.known = controller.probe_init_part_1(port) &&
                     controller.readHSPN(port, identity.headstage.data(), part_number_length) &&
                     controller.readProbePN(port, identity.probe.data(), part_number_length) &&
                     controller.readProbeSN(port, &identity.probe_serial_number);
    return identity;
}

const char* shown(const Part_Number& text) {
    return text.front() == '\0' ? "none" : text.data();
}

void print_design(Opened_Box& box, bool simulation) {
    struct Design {
        std::string signature;
        std::string build_date;
        float temperature;
        unsigned efuse;
    };

    const Design design = box.quietly([](ORBE_Controller_Library& controller) {
        return Design{controller.get_design_identifier_from_fpga(), controller.get_design_build_date(),
                      controller.get_fpga_temperature(), controller.get_fpga_efuse()};
    });
    std::printf("Design       %s, built %s\n", design.signature.c_str(), design.build_date.c_str());
    if (simulation) {
        std::puts("Temperature  none, takes a box");
    } else {
        std::printf("Temperature  %.1f degrees Celsius\n", static_cast<double>(design.temperature));
    }
    std::printf("Efuse        %08x\n", design.efuse);
}

void print_port(const std::string& line) {
    constexpr std::size_t behind_number = 3;
    std::puts(wrapped(line, terminal::width(output_descriptor), behind_number).c_str());
}

} // namespace

Info_Command::Info_Command(CLI::App& app)
    : m_command(app.add_subcommand("info", "Show the box's identity and what hangs on its probe ports")) {
    m_command->footer(
        "A headstage stores no serial number that the box could read.\n\n"
        "Exit codes: 0 every headstage whose link locks has answered, 1 not so, or there is no box or no "
        "headstage, 2 wrong arguments.");
}

int Info_Command::run(const Bench& bench) const {
    Opened_Box box(bench);
    print_design(box, bench.simulation);
    if (!box.runs_neuropixels_design(false)) {
        std::puts("Ports        none: this design serves no probes");
        return exit_codes::failed;
    }
    box.power_ports();
    const unsigned offered = box.controller().get_np_port_count_from_fpga_signature();
    const unsigned locked = box.controller().get_cached_np_port_status();
    std::printf("Ports        %u\n", offered);
    bool all_known = true;
    for (unsigned port = 0; port < port_count; ++port) {
        if (((locked >> port) & 1U) == 0) {
            std::printf("  %u  %s\n", port + 1, port < offered ? "not locked" : "not offered by the design");
            continue;
        }
        const Port_Identity identity =
            box.quietly([port](ORBE_Controller_Library& controller) { return ask(controller, port); });
        if (identity.known) {
            print_port(text_of("  %u  locked  headstage %s  probe %s  serial number %llu", port + 1,
                               shown(identity.headstage), shown(identity.probe),
                               identity.probe_serial_number));
        } else {
            print_port(text_of("  %u  locked  does not answer: ", port + 1) + bench.run.take_error());
            all_known = false;
        }
    }
    return all_known ? exit_codes::done : exit_codes::failed;
}

} // namespace Pelgar::ORBE::tools
