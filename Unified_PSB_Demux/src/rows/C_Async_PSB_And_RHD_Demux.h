// Layer: demultiplexer. First stage of the data path: takes whole transfer buffers from the pump thread and,
// on the main demux thread, splits them into 16-byte rows and routes the rows to four NP workers and one RHD
// worker. The host's threads set it up and take it down.
#pragma once

#include "common/Export.h"
#include "common/Relaxed.h"
#include "probe/C_NP_Worker_Thread.h"
#include "probe/I_L2_Demux_CH_Results.h"
#include "probe/I_Sample_Listener.h"
#include "rhd/C_RHD_Worker_Thread.h"
#include "rhd/I_RHD_Frame_Listener.h"
#include "rows/Row_Splitter.h"
#include "rows/Stream_Damage.h"
#include "rows/Transfer_Queue.h"
#include "wire/Main_mux_transfer_buffer_wrapper.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <memory>

namespace Pelgar::ORBE::demux {

// Made in the working directory whenever a demultiplexer is, where there is none.
inline constexpr const char* raw_data_file_name = "raw_data.bin";

class ORBE_EXPORT Async_NP_And_RHD_Demux {
public:
    Async_NP_And_RHD_Demux();
    ~Async_NP_And_RHD_Demux();
    Async_NP_And_RHD_Demux(const Async_NP_And_RHD_Demux&) = delete;
    Async_NP_And_RHD_Demux& operator=(const Async_NP_And_RHD_Demux&) = delete;

    // Starts the four NP workers and the RHD worker, also anew when `run` has finished, for another `run`;
    // does nothing while they run. std::system_error when the system refuses one of them: then none runs.
    void start_worker_threads();

    // For consumers that cannot wait for a whole block: hands a port's super frames on as soon as there are
    // so many, instead of 1,792. 1 to 1,792; before `start_worker_threads`.
    void set_block_length(std::uint32_t super_frames);

    // The most that is read into a transfer, 1 MiB unless it is said here, which the memory of the queue is
    // reckoned from. Before `start_worker_threads`.
    void set_transfer_length(std::uint32_t bytes);

    // What the inner queues may hold together, instead of `default_queue_memory`. Before
    // `start_worker_threads`.
    void set_queue_memory(std::uint64_t bytes);

    // Announces each sample of a port (index 0..3) to the listener, which is held weakly, and takes that
    // port's super frames whole or not at all. Before `start_worker_threads`; std::out_of_range for another
    // port.
    void set_sample_listener(std::weak_ptr<I_Sample_Listener> listener, unsigned port);

    // Body of the main demux thread: returns after the poison packet, when everything before it is delivered
    // and the workers are joined. Throws std::runtime_error("Buffer must contain at least 16 byte") for a
    // transfer buffer of 1 to 15 bytes.
    void run();

    // Queues a copy of the whole record. Pump thread; never blocks for long; allocates while the queue grows.
    // A queue that is full, because `run` has fallen behind by seconds, loses the record.
    void push_xfer_buffer_to_queue(const Main_mux_transfer_buffer_wrapper& buffer);

    // The same with the record itself, for which the caller gets another one, whatever that holds, or the
    // same one back when it is lost.
    void exchange_xfer_buffer(std::unique_ptr<Main_mux_transfer_buffer_wrapper>& buffer);

    // Removes the transfer buffer that `run` left at the front of the queue when it threw. Call `run` again
    // to go on with the next one.
    void drop_front_xfer_buffer();

    // Queues the record of size 0 that ends `run`.
    void poison_queue();

    // Blocks until the channel values of all whole blocks, and the RHD frames, in the transfers pushed so far
    // have reached their listeners. Only while `run` does.
    void wait_until_delivered();

    // Forgets the super frames of each port that do not fill a block yet, and the RHD frame of which only a
    // part has come, so that nothing of a run that has ended reaches the listeners of the next one. After
    // `wait_until_delivered`, while nothing is pushed.
    void drop_unfinished_blocks();

    // Tells the stages behind the port queues that the stream starts anew. Any thread.
    void signal_to_resync();

    // Port index 0..3. The setter throws std::runtime_error for another one, the getter std::out_of_range.
    void set_L2_CH_Results_Listener(std::weak_ptr<I_L2_Demux_CH_Results> listener, unsigned int np_index);
    std::weak_ptr<I_L2_Demux_CH_Results> get_L2_CH_Results_Listener(unsigned int np_index) const;

    void set_RHD_Results_Listener(std::weak_ptr<I_RHD_Frame_Listener> listener);
    std::weak_ptr<I_RHD_Frame_Listener> get_RHD_Results_Listener() const;

    // The number of RHD data streams in every frame from now on. Any thread.
    void set_enabled_RHD_stream_count(unsigned int count);

    // Poisons, wakes and joins the workers. Called by `run` when it ends; a second call does nothing.
    void wait_worker_threads_end();

    // Whether `run` has finished. Any thread.
    bool is_done() const { return m_done.load(); }

    std::uint32_t get_total_processed_SF_count() const;
    std::uint32_t get_total_processed_RHD_frame_count() const;

    // What found no room in the main queue, in the queue of a port's worker and in that of the RHD worker,
    // since construction. Any thread.
    std::uint64_t get_lost_byte_count() const { return m_main_demux_queue.lost_bytes(); }

    std::uint64_t get_lost_super_frame_count(unsigned port) const {
        return m_row_splitter->lost_super_frames(port);
    }

    std::uint64_t get_lost_RHD_word_count() const { return m_rhd_worker->lost_words(); }

    // What was wrong with the stream of a port (0..3) or that of RHD (4), which has no frame counter and no
    // tags: since construction, with the jump to the first row and frame of a run. Rows that a queue had no
    // room for are no gap; the frames in them are one where super frames are not taken whole. Any thread;
    // std::out_of_range for another stream.
    Stream_Damage get_stream_damage(unsigned stream) const;

private:
    friend struct Demux_Test_Peer;

    void renew();
    void set_queue_limits();
    void tell_losses();
    void process_queue_element();
    void process_record(const Main_mux_transfer_buffer_wrapper& record);
    void process_transfer_buffer(const Main_mux_transfer_buffer_wrapper& buffer);

    Transfer_Queue m_main_demux_queue;
    NP_Workers m_np_workers;
    std::unique_ptr<C_RHD_Worker_Thread> m_rhd_worker;
    std::unique_ptr<Row_Splitter> m_row_splitter;
    std::uint64_t m_queue_memory;
    std::uint32_t m_transfer_length = transfer_buffer_capacity;
    Relaxed<bool> m_worker_threads_started{false};
    bool m_threads_have_ended = false;
    bool m_stop_requested = false;
    // Nothing is written into it.
    std::ofstream m_raw_data_file;
    std::uint32_t m_processed_packet_count = 0;
    std::atomic<bool> m_done{false};
};

} // namespace Pelgar::ORBE::demux
