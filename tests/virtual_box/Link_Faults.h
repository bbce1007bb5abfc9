// Test support, virtual box. Which transactions of a probe link go wrong, and how. Not locked: the headstage
// that owns it does that.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <utility>

namespace Pelgar::ORBE::test {

enum class Link_Fault : std::uint8_t {
    silence,           // no byte comes back
    wrong_acknowledge, // the status byte says that the transaction failed
    lost_write,        // acknowledged, but nothing is written
    late               // carried out; the answer comes when nobody waits for it any more
};

class Link_Faults {
public:
    // Transactions are counted from 1.
    void strike_once(std::size_t transaction, Link_Fault fault) { m_single[transaction] = fault; }

    void strike_from(std::size_t transaction, Link_Fault fault) { m_from = {transaction, fault}; }

    void clear() {
        m_single.clear();
        m_from.reset();
    }

    std::optional<Link_Fault> at(std::size_t transaction) const {
        if (const auto found = m_single.find(transaction); found != m_single.end()) {
            return found->second;
        }
        if (m_from && transaction >= m_from->first) {
            return m_from->second;
        }
        return std::nullopt;
    }

private:
    std::map<std::size_t, Link_Fault> m_single;
    std::optional<std::pair<std::size_t, Link_Fault>> m_from;
};

} // namespace Pelgar::ORBE::test
