// Endurance test. The library on the virtual box, as fast as both go. The main thread; the rows are made on
// the library's pump thread.
#pragma once

#include "A_Stage.h"
#include "Opened_Library.h"

#include "Virtual_Box.h"

#include <atomic>
#include <memory>

namespace Pelgar::ORBE::test {

class Box_Stage final : public A_Stage {
public:
    Box_Stage(Packet_Layout layout, const Stage_Options& options);
    ~Box_Stage() override;

    std::uint64_t longest_opening() const override;
    void begin(std::uint64_t ticks) override;

    std::uint64_t received() const override { return m_pace.received_by_all(); }

    bool is_over() const override { return stream().is_held_back() && stream().ticks() >= m_last_tick; }

    std::string end() override;

    Judging_Host& host() override { return m_host; }

    std::uint64_t bytes() const override { return m_bytes; }

private:
    DMA_Source& stream() const { return m_box->stream(); }

    std::string compare_bytes() const;

    Packet_Layout m_layout;
    std::shared_ptr<Virtual_Box> m_box;
    Opened_Library m_library;
    Stream_Pace m_pace;
    Judging_Host m_host;
    std::atomic<std::uint64_t> m_first_tick{0};
    std::uint64_t m_last_tick = 0;
    std::atomic<std::uint64_t> m_bytes{0};
    std::uint64_t m_bytes_before = 0; // of earlier openings
};

} // namespace Pelgar::ORBE::test
