// Test support, virtual box. Where the rows of the stream come from: whoever makes them, tick by tick. One
// thread.
#pragma once

#include "Stream_Enables.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace Pelgar::ORBE::test {

class A_Row_Source {
public:
    A_Row_Source() = default;
    A_Row_Source(const A_Row_Source&) = delete;
    A_Row_Source& operator=(const A_Row_Source&) = delete;
    virtual ~A_Row_Source() = default;

    // Makes the rows of one tick, a super frame of each port and an RHD frame. Those of the last one must
    // have been taken.
    virtual void make_tick(const Stream_Enables& enables) = 0;

    // The probe counts its frames from 0 again.
    virtual void restart_probe(std::size_t port) = 0;

    // The design was loaded anew: nothing is left of what was before.
    virtual void reset() = 0;

    // Bytes that are ready, at most `wanted`.
    virtual std::span<const std::uint8_t> take(std::size_t wanted) = 0;
};

} // namespace Pelgar::ORBE::test
