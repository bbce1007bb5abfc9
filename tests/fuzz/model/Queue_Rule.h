// Road model: a queue that is full takes nothing more until it is half empty.
#pragma once

#include <cstddef>

namespace Pelgar::ORBE::road_model {

class Queue_Rule {
public:
    bool admits(std::size_t waiting, std::size_t most) {
        if (m_is_shut && waiting < most / 2) {
            m_is_shut = false;
        } else if (waiting >= most) {
            m_is_shut = true;
        }
        return !m_is_shut;
    }

private:
    bool m_is_shut = false;
};

} // namespace Pelgar::ORBE::road_model
