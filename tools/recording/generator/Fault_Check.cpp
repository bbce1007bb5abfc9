#include "generator/Fault_Check.h"

#include "generator/Recording_Size.h"
#include "stream_format/Wire_Format.h"
#include "terminal/Text_Format.h"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace Pelgar::ORBE::recording {

namespace {

// How many things of the stream this kind of fault can strike.
std::uint64_t targets_in(Fault_Kind kind, const Stream_Size& size) {
    switch (kind) {
    case Fault_Kind::missing_flag:
        return size.super_frames;
    case Fault_Kind::cut_frame:
        return size.rhd_frames;
    case Fault_Kind::wrong_tag:
        return size.super_frames == 0 ? 0 : size.rows;
    case Fault_Kind::lost_row:
    case Fault_Kind::bad_marker:
    case Fault_Kind::unknown_row:
        break;
    }
    return size.rows;
}

std::uint64_t targets_of(const Fault& fault, const Recording_Size& size) {
    std::uint64_t targets = 0;
    for (unsigned stream = 0; stream < size.streams.size(); ++stream) {
        if (fault.stream.value_or(stream) == stream) {
            targets += targets_in(fault.kind, size.streams[stream]);
        }
    }
    return targets;
}

const char* name_of_targets(Fault_Kind kind) {
    switch (kind) {
    case Fault_Kind::missing_flag:
        return "rows that start a super frame";
    case Fault_Kind::cut_frame:
        return "RHD frames";
    case Fault_Kind::wrong_tag:
        return "rows of probes";
    case Fault_Kind::lost_row:
    case Fault_Kind::bad_marker:
    case Fault_Kind::unknown_row:
        break;
    }
    return "rows";
}

void check_reach(const Fault& fault, const Recording_Size& size) {
    const std::uint64_t targets = targets_of(fault, size);
    const std::string what = name_of_targets(fault.kind);
    if (targets == 0) {
        throw std::invalid_argument("fault '" + fault.text + "' strikes nothing: the recording has no " +
                                    what + (fault.stream ? " there" : ""));
    }
    const bool placed = fault.rate == 0.0;
    if (placed && (fault.position >= targets || fault.count > targets - fault.position)) {
        throw std::invalid_argument("fault '" + fault.text + "' lies beyond the end: there are " +
                                    std::to_string(targets) + " " + what + ", counted from 0");
    }
    if (placed && fault.count == 0) {
        throw std::invalid_argument("fault '" + fault.text + "' strikes nothing: its count is 0");
    }
}

// Whether the fault strikes every one of its targets in the stream.
bool strikes_all(const Fault& fault, unsigned stream, const Recording_Size& size) {
    if (fault.stream.value_or(stream) != stream) {
        return false;
    }
    return fault.rate >= 1.0 || (fault.rate == 0.0 && fault.count == targets_of(fault, size));
}

// Whether nothing of the stream can reach a host.
bool leaves_nothing(const Fault& fault, unsigned stream, const Recording_Size& size) {
    switch (fault.kind) {
    case Fault_Kind::lost_row:
        return strikes_all(fault, stream, size);
    case Fault_Kind::missing_flag:
        return size.streams[stream].super_frames != 0 && strikes_all(fault, stream, size);
    case Fault_Kind::cut_frame:
        return size.streams[stream].rhd_frames != 0 && strikes_all(fault, stream, size);
    case Fault_Kind::bad_marker:
        // Reading ends at the first such row of every piece, and among a piece's first rows is one of each
        // port.
        for (unsigned port = 0; port < port_count; ++port) {
            if (size.streams[port].rows != 0 && strikes_all(fault, port, size)) {
                return true;
            }
        }
        return strikes_all(fault, stream, size);
    case Fault_Kind::wrong_tag:   // nobody looks at the tags
    case Fault_Kind::unknown_row: // all else is still there
        break;
    }
    return false;
}

} // namespace

void check_faults(const Recording_Options& options) {
    if (options.faults.empty()) {
        return;
    }
    const Recording_Size size = size_of(options);
    for (const Fault& fault : options.faults) {
        check_reach(fault, size);
    }
    std::string culprits;
    for (unsigned stream = 0; stream < size.streams.size(); ++stream) {
        if (size.streams[stream].rows == 0) {
            continue;
        }
        const auto culprit = std::ranges::find_if(
            options.faults, [&](const Fault& fault) { return leaves_nothing(fault, stream, size); });
        if (culprit == options.faults.end()) {
            return;
        }
        if (culprits.find("'" + culprit->text + "'") == std::string::npos) {
            culprits += (culprits.empty() ? "'" : ", '") + culprit->text + "'";
        }
    }
    throw std::invalid_argument("these faults leave nothing that reaches a host: " + culprits);
}

} // namespace Pelgar::ORBE::recording
