// Program orbe-record. One stream on its way from the library to the disk: read on a thread of its own, kept
// in a queue of seconds, written on another one. Started and asked on the main thread.
#pragma once

#include "formats/A_Recording_Writer.h"

#include <cstdint>
#include <optional>
#include <string>

namespace Pelgar::ORBE::recorder {

class A_Stream {
public:
    A_Stream() = default;
    virtual ~A_Stream() = default;
    A_Stream(const A_Stream&) = delete;
    A_Stream& operator=(const A_Stream&) = delete;

    // "probe 1", "ADC".
    virtual const std::string& name() const = 0;
    // Of a sample of the stream in the files, so that the user sees a rate.
    virtual double bytes_a_sample() const = 0;

    // Begins to read. What is read waits in the queue.
    virtual void start_reading() = 0;
    // The number of the first sample, as soon as it has been read.
    virtual std::optional<std::uint64_t> first_sample() const = 0;
    // Begins to write; `writer` must outlive the stream, and has it as its stream `index`.
    virtual void start_writing(A_Recording_Writer& writer, std::size_t index) = 0;

    // Reads what the library still has, and no more; does not wait for that.
    virtual void stop_reading() = 0;
    // Blocks until everything that was read has been written.
    virtual void join() = 0;

    // ---- While it runs.

    // Packets read so far.
    virtual std::uint64_t packets() const = 0;
    // Of the library's queue, 0 to 1.
    virtual double library_fill() const = 0;
    // What keeps it from being written; empty while nothing does.
    virtual std::string problem() const = 0;
};

} // namespace Pelgar::ORBE::recorder
