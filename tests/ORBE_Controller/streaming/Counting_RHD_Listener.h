// Test support: counts the RHD frames that the RHD worker thread delivers, and the streams of the last one.
#pragma once

#include "rhd/I_RHD_Frame_Listener.h"

#include <atomic>

namespace Pelgar::ORBE::test {

class Counting_RHD_Listener : public demux::I_RHD_Frame_Listener {
public:
    void publish_rhd_frame(demux::RHD_Frame& frame) override {
        ++frames;
        streams = 0;
        for (const auto& stream : frame.amplifier_data) {
            streams += stream ? 1U : 0U;
        }
    }

    std::atomic<unsigned> frames{0};
    std::atomic<unsigned> streams{0};
};

} // namespace Pelgar::ORBE::test
