// Program orbe-view, web. Counts what there may only be so much of: a ticket is held as long as there is one
// more. Any thread; nothing blocks.
#pragma once

#include <atomic>
#include <cstddef>
#include <memory>

namespace Pelgar::ORBE::view {

class Ticket_Office {
public:
    explicit Ticket_Office(std::size_t most) : m_most(most) {}

    // The office must outlive its tickets.
    class Ticket {
    public:
        explicit Ticket(std::atomic<std::size_t>& count) : m_count(count) {}

        ~Ticket() { --m_count; }

        Ticket(const Ticket&) = delete;
        Ticket& operator=(const Ticket&) = delete;

    private:
        std::atomic<std::size_t>& m_count;
    };

    // Null when all are out.
    std::unique_ptr<Ticket> take() {
        if (++m_count > m_most) {
            --m_count;
            return nullptr;
        }
        return std::make_unique<Ticket>(m_count);
    }

    std::size_t count() const { return m_count; }

private:
    std::size_t m_most;
    std::atomic<std::size_t> m_count{0};
};

} // namespace Pelgar::ORBE::view
