#include "probe/C_NP_Worker_Thread.h"

#include "common/Console.h"
#include "probe/CP_L1_ADC_TO_Channel.h"

#include <loguru.hpp>

#include <exception>
#include <utility>

namespace Pelgar::ORBE::demux {

namespace {

// The queue's length is printed once in so many blocks.
constexpr std::uint8_t report_interval_mask = 0x1F;

} // namespace

C_NP_Worker_Thread::C_NP_Worker_Thread() : C_NP_Worker_Thread(std::make_unique<CP_L1_ADC_TO_Channel>()) {}

C_NP_Worker_Thread::C_NP_Worker_Thread(std::unique_ptr<I_L1_Demux_ADC_Results> l1_stage)
    : m_l1_stage(std::move(l1_stage)), m_demuxer(std::make_unique<NP_PSB_Raw_Data_Demuxer>(*m_l1_stage)) {}

void C_NP_Worker_Thread::replace_l1_stage(std::unique_ptr<I_L1_Demux_ADC_Results> l1_stage) {
    const auto listener = get_l2_listener();
    m_demuxer = std::make_unique<NP_PSB_Raw_Data_Demuxer>(*l1_stage);
    m_l1_stage = std::move(l1_stage);
    set_l2_listener(listener);
}

C_NP_Worker_Thread::~C_NP_Worker_Thread() {
    end();
}

void C_NP_Worker_Thread::start(std::string name) {
    m_name = std::move(name);
    LOG_F(INFO, "Starting NP worker thread %s", m_name.c_str());
    m_thread = std::thread([this] { work(); });
}

void C_NP_Worker_Thread::end() {
    if (m_thread.joinable()) {
        poison_queue();
        join();
    }
}

std::size_t C_NP_Worker_Thread::push_block(const NP_Block_Buffer& block) {
    return m_queue.push_unbounded(block);
}

std::size_t C_NP_Worker_Thread::exchange_block(std::unique_ptr<NP_Block_Buffer>& block) {
    return m_queue.exchange_unbounded(block);
}

void C_NP_Worker_Thread::wait_until_decoded() {
    m_queue.wait_until_consumed();
}

void C_NP_Worker_Thread::poison_queue() {
    LOG_SCOPE_F(INFO, "poison_queue");
    auto poison = std::make_unique<NP_Block_Buffer>();
    exchange_block(poison);
}

void C_NP_Worker_Thread::join() {
    m_thread.join();
}

void C_NP_Worker_Thread::resync() {
    m_demuxer->reset_sync();
    m_l1_stage->reset_and_resync_counters();
}

void C_NP_Worker_Thread::set_l2_listener(const std::weak_ptr<I_L2_Demux_CH_Results>& listener) {
    if (auto* const stage = dynamic_cast<CP_L1_ADC_TO_Channel*>(m_l1_stage.get())) {
        stage->set_l2_ch_result_listener(listener);
    }
}

std::weak_ptr<I_L2_Demux_CH_Results> C_NP_Worker_Thread::get_l2_listener() const {
    const auto* const stage = dynamic_cast<const CP_L1_ADC_TO_Channel*>(m_l1_stage.get());
    return stage != nullptr ? stage->get_l2_ch_result_listener() : std::weak_ptr<I_L2_Demux_CH_Results>();
}

std::uint64_t C_NP_Worker_Thread::get_frame_gap_count() const {
    const auto* const stage = dynamic_cast<const CP_L1_ADC_TO_Channel*>(m_l1_stage.get());
    return stage != nullptr ? stage->get_frame_gap_count() : 0;
}

void C_NP_Worker_Thread::work() {
    LOG_F(INFO, "NP Worker thread started");
    std::uint8_t iteration = 0;
    while (!m_stop) {
        const NP_Block_Buffer& block = m_queue.wait_front();
        if (block.fill == 0) {
            console::out("Worker thread  received poision packet ", m_name, '\n');
            m_stop = true;
        } else {
            decode(block);
        }
        m_queue.pop();
        if ((iteration++ & report_interval_mask) == 0) {
            console::out(m_name, " worker, queue element count : ", m_queue.size(), '\n');
        }
    }
    LOG_F(INFO, "NP Worker thread end");
}

// What a listener throws costs the rest of the block, not the thread.
void C_NP_Worker_Thread::decode(const NP_Block_Buffer& block) {
    try {
        if (block.lost_before != 0) [[unlikely]] {
            m_l1_stage->skip_super_frames(block.lost_before);
        }
        m_demuxer->feed_psb_raw_data_block_buffer(block.data, block.fill);
    } catch (const std::exception& exception) {
        LOG_F(ERROR, "NP worker %s : %s", m_name.c_str(), exception.what());
    } catch (...) {
        LOG_F(ERROR, "NP worker %s : %s", m_name.c_str(), "unknown exception");
    }
}

} // namespace Pelgar::ORBE::demux
