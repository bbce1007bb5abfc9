// Test support, random hosts. A virtual box that things happen to: a headstage goes silent or answers
// wrongly, a link is lost and comes back, a DMA read comes short, a register space is lost. Any thread.
#pragma once

#include "Random_Arguments.h"
#include "Virtual_Box.h"

#include <memory>

namespace Pelgar::ORBE::test {

class Random_Box {
public:
    // `reads_may_fail`: the box's own way waits for ever for a pump whose read failed, so there they do not.
    explicit Random_Box(bool reads_may_fail);

    std::shared_ptr<Virtual_Box> box() const { return m_box; }

    void strike(Random_Arguments& random);

private:
    std::shared_ptr<Virtual_Box> m_box;
    bool m_reads_may_fail;
};

} // namespace Pelgar::ORBE::test
