// Layer: demultiplexer. One probe port: a queue of blocks that the main demux thread fills, and the NP worker
// thread that decodes them. Listeners are called on the worker's thread.
#pragma once

#include "common/Block_Queue.h"
#include "common/Queue_Limit.h"
#include "common/Relaxed.h"
#include "probe/I_L1_Demux_ADC_Results.h"
#include "probe/I_L2_Demux_CH_Results.h"
#include "probe/NP_PSB_Raw_Data_Demuxer.h"
#include "wire/NP_Block_Buffer.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <thread>

namespace Pelgar::ORBE::demux {

class C_NP_Worker_Thread {
public:
    // A worker with an ADC-to-channel stage behind its frame demuxer, or with a stage of the caller's.
    C_NP_Worker_Thread();
    explicit C_NP_Worker_Thread(std::unique_ptr<I_L1_Demux_ADC_Results> l1_stage);

    // Puts another stage behind the frame demuxer; the listener of channel values stays. Not while the thread
    // runs.
    void replace_l1_stage(std::unique_ptr<I_L1_Demux_ADC_Results> l1_stage);

    // Ends and joins the thread if it still runs.
    ~C_NP_Worker_Thread();
    C_NP_Worker_Thread(const C_NP_Worker_Thread&) = delete;
    C_NP_Worker_Thread& operator=(const C_NP_Worker_Thread&) = delete;

    // Takes an earlier poison back, so that a thread that is started again decodes. Not while it runs.
    void renew() { m_stop = false; }

    // Starts the thread. Not while it runs.
    void start(std::string name);

    // The queue takes at most so many blocks; without a limit before. Not while blocks are queued.
    void set_queue_limit(std::size_t blocks) { m_limit = Queue_Limit(blocks); }

    // Whether the queue is to get another block. Asked before each block by who queues them; a limit is kept
    // by keeping to the answer.
    bool has_room() { return m_limit.admits(m_queue.size()); }

    // Queues a copy of the block and returns the number of blocks now queued. Never drops; allocates while
    // the queue grows.
    std::size_t push_block(const NP_Block_Buffer& block);

    // The same with the block itself, for which the caller gets another one, whatever that holds.
    std::size_t exchange_block(std::unique_ptr<NP_Block_Buffer>& block);

    // Blocks until every block queued so far has been decoded. Only while the thread runs.
    void wait_until_decoded();

    // Queues the block of fill 0 that ends the thread.
    void poison_queue();

    // Blocks until the thread has ended.
    void join();

    // Both of it, where there is a thread.
    void end();

    // Tells the stages that the stream starts anew. Any thread.
    void resync();

    // The destination of the channel values; without an effect, and empty, when the stage is the caller's
    // own. Any thread.
    void set_l2_listener(const std::weak_ptr<I_L2_Demux_CH_Results>& listener);
    std::weak_ptr<I_L2_Demux_CH_Results> get_l2_listener() const;

    // Sync patterns counted by the frame demuxer. Any thread.
    std::uint32_t get_sync_pattern_count() const { return m_demuxer->get_sync_pattern_count(); }

    // Words with a wrong lane tag, and places where the frame counter jumps; none of the latter are known
    // when the stage is the caller's own. Since construction, or since the stage was replaced. Any thread.
    std::uint64_t get_wrong_tag_count() const { return m_demuxer->get_wrong_tag_count(); }

    std::uint64_t get_frame_gap_count() const;

private:
    friend struct Demux_Test_Peer;

    void work();
    void decode(const NP_Block_Buffer& block);

    Block_Queue<NP_Block_Buffer> m_queue;
    Queue_Limit m_limit{std::numeric_limits<std::size_t>::max()};
    std::thread m_thread;
    std::unique_ptr<I_L1_Demux_ADC_Results> m_l1_stage;
    std::unique_ptr<NP_PSB_Raw_Data_Demuxer> m_demuxer;
    std::string m_name;
    Relaxed<bool> m_stop{false};
};

} // namespace Pelgar::ORBE::demux
