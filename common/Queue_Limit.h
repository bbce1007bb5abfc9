// Layer: common. The limit of a queue that must not stop its producer: what comes while the queue is full is
// lost, and goes on being lost until the queue is half empty, so that a stage that falls behind costs one
// long gap and not many short ones. Asked by the queue's one producer; nothing blocks.
#pragma once

#include <cstddef>

namespace Pelgar::ORBE {

class Queue_Limit {
public:
    // The queue never holds more than `most` records, at least 2.
    explicit Queue_Limit(std::size_t most) : m_most(most), m_admitted(most) {}

    // Whether one record more may go into a queue that holds `queued`.
    bool admits(std::size_t queued) {
        const bool admitted = queued < m_admitted;
        m_admitted = admitted ? m_most : m_most / 2;
        return admitted;
    }

    std::size_t most() const { return m_most; }

private:
    std::size_t m_most;
    std::size_t m_admitted; // what the queue must be below
};

} // namespace Pelgar::ORBE
