// Layer: demultiplexer. The box's RHD stream: a FIFO of words that the main demux thread fills, and the RHD
// worker thread that reads frames from it. The listener is called on the worker's thread.
#pragma once

#include "common/Listener_Slot.h"
#include "rhd/I_RHD_Frame_Listener.h"
#include "rhd/RHD_Frame_Reader.h"
#include "rhd/RHD_Word_Fifo.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <thread>

namespace Pelgar::ORBE::demux {

class C_RHD_Worker_Thread {
public:
    C_RHD_Worker_Thread() = default;

    // Ends and joins the thread if it still runs.
    ~C_RHD_Worker_Thread();
    C_RHD_Worker_Thread(const C_RHD_Worker_Thread&) = delete;
    C_RHD_Worker_Thread& operator=(const C_RHD_Worker_Thread&) = delete;

    // Takes an earlier stop back and drops what is queued, so that the thread can be started again. Not while
    // it runs.
    void renew() { m_fifo.restart(); }

    // Starts the thread. Not while it runs.
    void start(std::string name);

    // The FIFO takes at most so many pieces; without a limit before. Not while words are pushed.
    void set_queue_limit(std::size_t pieces) { m_fifo.set_limit(pieces); }

    // Words are missing between the last one that was pushed and the next. Main demux thread.
    void note_loss() { m_fifo.note_loss(); }

    // Words that the FIFO had no room for. Any thread.
    std::uint64_t lost_words() const { return m_fifo.lost_words(); }

    // Tells what was lost and not told yet. Main demux thread.
    void tell_loss() { m_fifo.tell_loss(); }

    // Where the payload words of the next rows may be put, at most a transfer's; `push_placed_words` hands so
    // many to the thread and wakes it, or loses them while the FIFO is full. Main demux thread; allocates
    // while the FIFO grows.
    std::uint16_t* place_for_words() { return m_fifo.place(); }

    void push_placed_words(std::size_t count) { m_fifo.push_placed(count); }

    // Appends the payload words of one or more rows and wakes the thread. Allocates while the FIFO grows.
    void push_row_words(std::span<const std::uint16_t> words) { m_fifo.push_words(words); }

    // Blocks until the frames in the words that were pushed so far have been delivered. Only while the thread
    // runs.
    void wait_until_delivered() { m_fifo.wait_until_used(); }

    // Drops the words that no frame has been made of yet, those of a half-read frame among them. Frames and
    // messages go on as if they had never come. Any thread, while nothing is pushed.
    void drop_unfinished_frame() { m_fifo.forget_words(); }

    // Sets the stop flag. The thread ends when it has finished the frame it reads; frames that are still
    // queued are dropped. A thread that waits for words sees the flag after `push_wake_up_words`.
    void signal_to_stop();

    // Appends enough zero words to finish any frame of the RHD interface. After `signal_to_stop`.
    void push_wake_up_words();

    // Blocks until the thread has ended.
    void join();

    // The destination of the frames, held weakly. Any thread.
    void set_listener(std::weak_ptr<I_RHD_Frame_Listener> listener);
    std::weak_ptr<I_RHD_Frame_Listener> get_listener() const;

    // The number of data streams in the frames that begin from now on. Any thread.
    void set_enabled_stream_count(std::uint32_t count) { m_reader.set_enabled_stream_count(count); }

    // Valid frames read since construction. Any thread.
    std::uint32_t get_valid_frame_count() const { return m_reader.get_valid_frame_count(); }

private:
    friend struct Demux_Test_Peer;

    void work();
    bool read_and_deliver();
    void deliver(RHD_Frame& frame);
    void end_burst();

    RHD_Word_Fifo m_fifo{[this] { end_burst(); }};
    RHD_Frame_Reader m_reader{m_fifo};
    RHD_Frame m_frame; // kept from frame to frame for its arrays
    std::thread m_thread;
    Listener_Slot<I_RHD_Frame_Listener> m_listener;
    bool m_in_burst = false; // from a frame to the next wait for words
    std::string m_name;
};

} // namespace Pelgar::ORBE::demux
