#include "Random_Box.h"

#include <optional>

namespace Pelgar::ORBE::test {

Random_Box::Random_Box(bool reads_may_fail)
    : m_box(std::make_shared<Virtual_Box>()), m_reads_may_fail(reads_may_fail) {}

void Random_Box::strike(Random_Arguments& random) {
    const std::size_t port = random.below(4);
    const std::size_t transaction = 1 + random.below(200);
    Virtual_Headstage& headstage = m_box->headstage(port);
    switch (random.below(8)) {
    case 0:
        headstage.forget_frames();
        headstage.fail_once(transaction, static_cast<Link_Fault>(random.below(3)));
        break;
    case 1:
        headstage.forget_frames();
        headstage.fail_from(transaction, Link_Fault::silence);
        break;
    case 2:
        m_box->lock_at_look(port, std::nullopt);
        break;
    case 3:
        m_box->lock_at_look(port, 1 + random.below(3));
        break;
    case 4:
        if (m_reads_may_fail) {
            m_box->stream().fail_read(m_box->stream().reads() + 1 + random.below(20),
                                      {DMA_Read_Fault::Kind::fails, 0});
        }
        break;
    case 5:
        m_box->stream().fail_read(
            m_box->stream().reads() + 1 + random.below(20),
            {DMA_Read_Fault::Kind::short_read, static_cast<std::uint32_t>(random.below(40'000))});
        break;
    case 6:
        m_box->queue_open_results(
            {random.one_in(2) ? Virtual_Box::Open_Result::no_box : Virtual_Box::Open_Result::mapping_fails});
        break;
    default:
        headstage.clear_faults();
        m_box->lock_at_look(port, 1);
        break;
    }
}

} // namespace Pelgar::ORBE::test
