#include "Table_Writer.h"

#include <array>
#include <cstddef>

namespace Pelgar::ORBE::test {

namespace {

constexpr const char* page_head = R"(# What a fault does, and what brings everything back

`tests/fault_matrix` makes this page: it has every fault of the virtual box strike in every phase of a host's visit in
which it can show, writes down what the host sees, lets the cause go away and tries what brings everything back. It fails
when the page says anything else; `fault_matrix docs/fault-matrix.md --write` renews the page.

- **Result**: of the phase's first call that fails; 0 when all succeed. Of a stream: what the host misses, in three
  blocks and a bit from the fault on.
- **Message**: first `getLastErrorMessage` of the call that failed, then errors and warnings of `ORBE.log`, then what is
  printed and is not without the fault. Lines that differ in numbers alone are there once.
- **Brings back**: the least that a host has to do once the cause has gone, of: nothing, the call again, ending the run
  and starting another, `closeBS` and `openBS` with everything that follows. After it every later call succeeds, the
  probe holds what a healthy visit gives it, and every sample of all four ports, and of the ADC inputs in the box's own
  way, is the one that was sent; each was carried out.

The phases: *open* is `openBS`; *bring-up* `openPort`, `openProbe`, `init`; *configure* `setGain`, `selectElectrode`,
`setADCCalibration`, `setGainCalibration`, `writeProbeConfiguration` with read check; *start* and *stop*
`start_acquisition` and `stop_acquisition`, in host mode `setSWTrigger` and `arm`; *stream* is reading; *close* is
`closeBS`. A fault of the link strikes in the middle of the phase's transactions.

Deliberate is that the box's own `stop_acquisition` waits for ever behind a pump that broke off: it comes back when
another thread calls `closeBS` and `openBS` and a run is started and stopped. As long as the basestation is not closed,
another `start_acquisition` beside the one that waits ends the process. A read that the driver does not end holds up what
waits for the pump, in both ways, as long as it lasts. A link that is lost while data stream is told by nothing but the
missing packets. Bytes that a late or wrong answer of the link leaves behind are taken for the next answer, and so on, in the
box's own way; host mode drops them.

A full disk is one on which no file grows any more ("File too large"). A raw capture whose disk is too slow loses rows of
its own, which the log counts, and nothing of the acquisition: [raw capture](data-road.md#raw-capture).
)";

constexpr const char* own_head = R"(
## The box's own way

)";

constexpr const char* details_head = R"(
### In detail

)";

constexpr const char* host_head = R"(
## Where host mode answers differently

An acquisition program on a PXI basestation (`ORBE_HOST_MODE` with `pxi`). What is not here is as above, but for what
concerns the ADC inputs, which such a basestation has none of.

)";

constexpr const char* recordings_head = R"(
## Recordings that are played

A recording (`ORBE_DFGMZ_ADAPTER_SIM`) in the place of the box, read to its end; then the pump ends, and behind it the
box's own `stop_acquisition` does not return, so that a host closes instead. Strikes while streaming find the pump
behind its first piece of 1 MiB. What a disk hands out slowly is a named pipe, which host mode, because it begins each
run at the recording's beginning, cannot play. Phases that are not named do not touch the recording.

| fault | phase | way | result | message | brings back |
|---|---|---|---|---|---|
)";

struct Reason {
    Part part;
    const char* mark;
    const char* text;
};

constexpr std::array reasons{
    Reason{Part::link, "a", "no byte crosses the link in this phase"},
    Reason{Part::ids, "b", "the ids are read by `openPort` alone"},
    Reason{Part::locks, "c", "nobody looks at the locks, speaks over the link or reads the stream"},
    Reason{Part::driver, "d", "only `openBS` opens the driver"},
    Reason{Part::next_read, "e", "no read of the stream begins here that a host would get anything of"},
    Reason{Part::read, "f", "no read of the stream is under way"},
    Reason{Part::calibration, "g", "no calibration file is read"},
    Reason{Part::capture, "h", "no file of the capture is made or written"},
};

const Reason& reason_of(Part part) {
    for (const Reason& reason : reasons) {
        if (reason.part == part) {
            return reason;
        }
    }
    return reasons.front();
}

std::string in_cell(const std::string& text) {
    std::string cell;
    for (const char character : text) {
        cell += character == '|' ? "\\|" : std::string(1, character);
    }
    return cell;
}

// As code, with the whole line's blanks.
std::string as_message(const std::string& line) {
    return "`" + in_cell(line) + "`";
}

std::string messages_of(const Matrix_Cell& cell) {
    std::string text;
    for (const std::string& message : cell.messages) {
        text += (text.empty() ? "" : "<br>") + as_message(message);
    }
    return text.empty() ? "none" : text;
}

std::string overview(const std::vector<Matrix_Line>& lines) {
    std::string text = "| fault |";
    std::string rule = "|---|";
    for (const Phase phase : all_phases) {
        text += std::string(" ") + name_of(phase) + " |";
        rule += "---|";
    }
    text += "\n" + rule + "\n";
    for (const Matrix_Line& line : lines) {
        text += "| " + line.fault.group + ": " + line.fault.name + " |";
        for (const Phase phase : all_phases) {
            const auto cell = line.own.find(phase);
            text += cell == line.own.end() ? std::string(" – ") + reason_of(line.fault.part).mark + " |"
                                           : " " + cell->second.recovery + " |";
        }
        text += "\n";
    }
    text += "\nEach cell says what brings everything back. –: cannot show, because\n\n";
    for (const Reason& reason : reasons) {
        text += std::string("- ") + reason.mark + ": " + reason.text + "\n";
    }
    return text;
}

std::string row(const std::string& where, const Matrix_Cell& cell) {
    return "| " + where + " | " + cell.result + " | " + messages_of(cell) + " | " + cell.recovery + " |\n";
}

std::string detail(const Matrix_Line& line, Phase phase, const Matrix_Cell& cell) {
    return row(line.fault.name + " | " + name_of(phase), cell);
}

// Both ways in one row where they are the same.
std::string details_of(const Recording_Line& line) {
    std::string text;
    for (const auto& [phase, own] : line.own) {
        const std::string where = line.fault.name + " | " + name_of(phase) + " | ";
        const auto host_mode = line.host_mode.find(phase);
        if (host_mode != line.host_mode.end() && host_mode->second == own) {
            text += row(where + "both", own);
            continue;
        }
        text += row(where + "its own", own);
        if (host_mode != line.host_mode.end()) {
            text += row(where + "host mode", host_mode->second);
        }
    }
    return text;
}

constexpr const char* table_head =
    "| fault | phase | result | message | brings back |\n|---|---|---|---|---|\n";

} // namespace

std::string matrix_page(const std::vector<Matrix_Line>& lines,
                        const std::vector<Recording_Line>& recordings) {
    std::string own;
    std::string differing;
    for (const Matrix_Line& line : lines) {
        for (const auto& [phase, cell] : line.own) {
            own += detail(line, phase, cell);
        }
        for (const auto& [phase, cell] : line.host_mode) {
            const auto same = line.own.find(phase);
            if (same == line.own.end() || !(same->second == cell)) {
                differing += detail(line, phase, cell);
            }
        }
    }
    std::string of_recordings;
    for (const Recording_Line& line : recordings) {
        of_recordings += details_of(line);
    }
    return page_head + std::string(own_head) + overview(lines) + details_head + table_head + own + host_head +
           table_head + differing + recordings_head + of_recordings;
}

} // namespace Pelgar::ORBE::test
