// Tools, recorder. What a format makes of a recording's folder. Used by the packet writer that it belongs to,
// on the thread that makes it; blocks on the disk.
#pragma once

#include "formats/A_Stream_Sink.h"

#include <cstddef>
#include <memory>
#include <string>

namespace Pelgar::ORBE::recorder {

struct Named_Sink {
    std::string name; // as the table of gaps has it
    std::unique_ptr<A_Stream_Sink> sink;
};

class A_Folder_Format {
public:
    virtual ~A_Folder_Format() = default;

    // `probe` is the place in the description.
    virtual Named_Sink make_ap_sink(std::size_t probe) = 0;
    virtual Named_Sink make_lfp_sink(std::size_t probe) = 0;
    virtual Named_Sink make_adc_sink() = 0;
};

} // namespace Pelgar::ORBE::recorder
